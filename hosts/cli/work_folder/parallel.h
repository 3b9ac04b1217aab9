#pragma once

#include <cstddef>
#include <functional>

namespace vtdirect_cli {

/// Runs a task for each number from 0 to `count` - 1, on so many threads at a time, and returns when all have
/// ended. The first one runs alone, so that a login is asked for once and the others go with its answer. After
/// a signal no further task begins. What a task throws is thrown here, after all have ended.
void RunInParallel(std::size_t count, unsigned threads, const std::function<void(std::size_t)>& task);

}  // namespace vtdirect_cli
