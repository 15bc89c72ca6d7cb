// Work in parts on several threads: the parts, not the threads, settle what is computed.
#ifndef NUMERICS_THREADS_H_
#define NUMERICS_THREADS_H_

#include <cstddef>
#include <functional>

namespace survmeth::numerics {

// How many threads inParallel uses: what setThreads said, else the environment's SURVMETH_THREADS,
// else as many as the machine has; 1 where there are no threads.
unsigned threads();

// From now on; 0 goes back to the environment's or the machine's number.
void setThreads(unsigned count);

// The number that a setting like SURVMETH_THREADS stands for: a whole number from 1 to 1024, for
// any other text, or none, `otherwise`.
unsigned threadsOf(const char* setting, unsigned otherwise);

// Calls work(0), work(1), ..., work(parts - 1), each once, on up to threads() threads of which the
// caller's is one; returns when all have ended. Which thread takes which part is left to chance:
// results have to stand at a place of each part's own and be put together in the parts' order, so
// that they are the same for every number of threads.
//
// Threads live for one call. A process that forks between two calls has nothing to restart, and
// nothing is shared with another caller.
//
// Edge within work the same call runs its parts one after the other on that thread; so it does
//      where no thread can be started. Of the exceptions that parts end with, that of the first
//      such part is thrown on; parts that have not begun by then are left out
// Cost some 20 microseconds for each thread beside the caller's
void inParallel(std::size_t parts, const std::function<void(std::size_t)>& work);

}  // namespace survmeth::numerics

#endif  // NUMERICS_THREADS_H_
