#include "thread/ThreadsafeQueue.hpp"

#include <utility>

namespace velmo::thread {

ThreadsafeQueue::ThreadsafeQueue() : head_(std::make_unique<Node>()), tail_(head_.get()) {}

ThreadsafeQueue::~ThreadsafeQueue() {
  // Node after node, because the chain of owning pointers would recurse once per remaining task.
  while (head_) head_ = std::move(head_->next);
}

ThreadsafeQueue::Place::Place()
    : data_(std::make_shared<FunctionWrapper>()), emptyNode_(std::make_unique<Node>()) {}

void ThreadsafeQueue::push(Place place, FunctionWrapper task) {
  *place.data_ = std::move(task);
  Node* const newTail = place.emptyNode_.get();

  const std::lock_guard lock(tailMutex_);
  tail_->data = std::move(place.data_);
  tail_->next = std::move(place.emptyNode_);
  tail_ = newTail;
}

std::shared_ptr<FunctionWrapper> ThreadsafeQueue::tryPop() {
  std::unique_ptr<Node> first;
  {
    const std::lock_guard lock(headMutex_);
    if (head_.get() == tailNow_()) return nullptr;
    first = std::move(head_);
    head_ = std::move(first->next);
  }
  return std::move(first->data);
}

const ThreadsafeQueue::Node* ThreadsafeQueue::tailNow_() {
  const std::lock_guard lock(tailMutex_);
  return tail_;
}

}  // namespace velmo::thread
