#include "net/mp_socket_item.h"

#include "net/mp_null_handler.h"

MP_SocketItem::MP_SocketItem() : handler(MP_NullHandler::Get()) {}
