#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>

/// Sending the picture to the open board, block by block.
namespace karvex::loader {

/// What setParameters and the worker share of one load.
struct load_job {
  std::size_t report_length = 0;
  std::mutex lock;
  bool error_flag = false;  ///< guarded by `lock`
};

/// Programs the open board and reboots it. Runs on the global queue; tells its progress through the load
/// status: 6 and 7 by way of the main queue, 10 and 11 at once.
void programming_worker(load_job& job);

/// How far the load has come. For showing only: decisions go by the load status.
struct load_progress {
  std::uint32_t blocks_sent = 0;
  std::uint32_t blocks_to_send = 0;  ///< 0 until the worker has started
};

/// The progress of the load under way, or of the last one. Any thread; no lock.
load_progress get_load_progress();

/// Forgets the last load's progress. Called when a load begins.
void reset_load_progress();

}  // namespace karvex::loader
