#pragma once

#include <memory>
#include <mutex>
#include <utility>

namespace velmo::thread {

/// Move-only owner of a callable without arguments and result, or of none.
///
/// std::function would require a copy constructor, which packaged tasks don't have. Destroying a
/// wrapper drops a task that never ran; its future then reports a broken promise.
class FunctionWrapper {
 public:
  FunctionWrapper() noexcept = default;
  template <class F>
  explicit FunctionWrapper(F function) : impl_(std::make_unique<Impl_<F>>(std::move(function))) {}

  /// @pre the wrapper has a callable
  void operator()() { (*impl_)(); }

 private:
  struct Base_ {
    virtual void operator()() = 0;
    virtual ~Base_() = default;
  };

  template <class F>
  struct Impl_ final : Base_ {
    explicit Impl_(F function) : function_(std::move(function)) {}
    void operator()() override { function_(); }
    F function_;
  };

  std::unique_ptr<Base_> impl_;
};

/// Unbounded first-in-first-out queue of tasks for many producers and consumers.
///
/// A linked list that always ends with an empty node, so that `push` touches only the tail and
/// `tryPop` only the head, each under its own lock. Locks are taken in a fixed order: head, then
/// tail, the second only to read where the list ends. Tasks leave in the order in which they were
/// added; the rest is dropped with the queue. All operations are safe from any thread and throw
/// std::system_error if a lock can't be taken.
///
/// Source: the two-lock queue of Michael and Scott, Simple, fast, and practical non-blocking and
/// blocking concurrent queue algorithms, 15th PODC (1996).
class ThreadsafeQueue {
  struct Node {
    std::shared_ptr<FunctionWrapper> data;
    std::unique_ptr<Node> next;
  };

 public:
  ThreadsafeQueue();
  ThreadsafeQueue(const ThreadsafeQueue&) = delete;
  ThreadsafeQueue& operator=(const ThreadsafeQueue&) = delete;
  ~ThreadsafeQueue();

  /// The memory for one task in the queue.
  class Place {
   public:
    Place();

   private:
    friend class ThreadsafeQueue;
    std::shared_ptr<FunctionWrapper> data_;
    std::unique_ptr<Node> emptyNode_;
  };

  /// Appends a task without allocating: everything that can fail comes before, so that a task whose
  /// future exists is never destroyed for lack of memory.
  void push(Place place, FunctionWrapper task);

  /// The oldest task, or null if there is none; doesn't wait.
  [[nodiscard]] std::shared_ptr<FunctionWrapper> tryPop();

 private:
  [[nodiscard]] const Node* tailNow_();

  std::mutex headMutex_;
  std::unique_ptr<Node> head_;
  std::mutex tailMutex_;
  Node* tail_;  ///< the empty node at the end
};

}  // namespace velmo::thread
