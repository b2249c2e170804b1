#include "net/mp_null_handler.h"

#include "frame/process_object.h"

namespace {

ProcessObject<MP_NullHandler> theHandler;

}  // namespace

MP_NullHandler* MP_NullHandler::Get() { return theHandler.Get(); }
void MP_NullHandler::Free() { theHandler.Free(); }
