// The lines of state machines on the terminal.

#ifndef GATEWAY_TRACE_H_
#define GATEWAY_TRACE_H_

// An FSM_LogCallback: prints the line, which comes in GBK, in UTF-8.
void TraceToTerminal(int level, const char* format, ...);

#endif  // GATEWAY_TRACE_H_
