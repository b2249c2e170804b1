// The whole interface of KalvoBase.

#ifndef KALVOBASE_KALVOBASE_H_
#define KALVOBASE_KALVOBASE_H_

// IWYU pragma: begin_exports
#include "kalvobase/bytes.h"
#include "kalvobase/exception.h"
#include "kalvobase/file.h"
#include "kalvobase/fsm.h"
#include "kalvobase/handler.h"
#include "kalvobase/ini.h"
#include "kalvobase/kernel_debug.h"
#include "kalvobase/lifecycle.h"
#include "kalvobase/lock.h"
#include "kalvobase/log.h"
#include "kalvobase/process.h"
#include "kalvobase/queue.h"
#include "kalvobase/socket.h"
#include "kalvobase/tcp_stream.h"
#include "kalvobase/text.h"
#include "kalvobase/thread.h"
#include "kalvobase/timer.h"
#include "kalvobase/types.h"
#include "kalvobase/value.h"
#include "kalvobase/waitable.h"
// IWYU pragma: end_exports

#endif  // KALVOBASE_KALVOBASE_H_
