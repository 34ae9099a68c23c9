#pragma once

#include <memory>
#include <utility>

namespace velmo::thread {

/// Move-only owner of a callable without arguments and result.
///
/// std::function would ask for a copy constructor, which packaged tasks don't have.
class FunctionWrapper {
 public:
  template <class F>
  explicit FunctionWrapper(F function) : impl_(std::make_unique<Impl_<F>>(std::move(function))) {}

  /// @pre the wrapper hasn't been moved from
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

}  // namespace velmo::thread
