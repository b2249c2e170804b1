#include "kalvobase/handler.h"

Kalvo_SocketHandlerObj::Kalvo_SocketHandlerObj() = default;
Kalvo_SocketHandlerObj::Kalvo_SocketHandlerObj(const Kalvo_SocketHandlerObj&) = default;
Kalvo_SocketHandlerObj& Kalvo_SocketHandlerObj::operator=(const Kalvo_SocketHandlerObj&) = default;
Kalvo_SocketHandlerObj::~Kalvo_SocketHandlerObj() = default;
