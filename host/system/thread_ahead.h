// Work that a second thread does while the first one waits for something else.
#pragma once

#include <atomic>
#include <exception>
#include <functional>
#include <future>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>

namespace host {

template <typename Result>
class ThreadAhead {
 public:
  // Nothing is done ahead.
  ThreadAhead() = default;

  // Begins the work, which must own all that it reads: the thread needs no waiting for if finish is
  // never called. Without a thread to be had, nothing is done ahead.
  explicit ThreadAhead(std::function<Result()> work) {
    auto shared = std::make_shared<Shared>();
    try {
      std::thread([shared, work = std::move(work)] {
        if (shared->isTaken.exchange(true)) return;
        try {
          shared->result.set_value(work());
        } catch (...) {
          shared->result.set_exception(std::current_exception());
        }
      }).detach();
      shared_ = std::move(shared);
    } catch (const std::system_error&) {
      // finish does the work.
    }
  }

  // Waits for the result. If the thread has not begun, as on a busy machine, or nothing is done
  // ahead, the result is that of otherwise. To be called once. Throws what the work throws.
  template <typename Otherwise>
  Result finish(Otherwise otherwise) {
    if (!shared_ || !shared_->isTaken.exchange(true)) return otherwise();
    return shared_->result.get_future().get();
  }

 private:
  struct Shared {
    std::atomic<bool> isTaken = false;  // by the thread, or by finish
    std::promise<Result> result;
  };

  std::shared_ptr<Shared> shared_;  // with the thread; null if nothing is done ahead
};

}  // namespace host
