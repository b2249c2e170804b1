// The two things that a stream reads from and writes to.

#ifndef KALVOBASE_SRC_FILES_STREAM_KIND_H_
#define KALVOBASE_SRC_FILES_STREAM_KIND_H_

enum class StreamKind { kSocket = 0, kFile = 1 };

// The buffer of a stream that has not met anything larger yet.
constexpr int kStreamCapacity = 8192;

#endif  // KALVOBASE_SRC_FILES_STREAM_KIND_H_
