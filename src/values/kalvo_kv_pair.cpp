#include "kalvobase/value.h"
#include "values/mp_value.h"

Kalvo_KVPair::Kalvo_KVPair() = default;
Kalvo_KVPair::~Kalvo_KVPair() = default;

int operator==(Kalvo_KVPair& a, Kalvo_KVPair& b) {
  return a.key == b.key && MP_Value::Of(a.value).Equals(MP_Value::Of(b.value));
}

int operator!=(Kalvo_KVPair& a, Kalvo_KVPair& b) { return !(a == b); }
