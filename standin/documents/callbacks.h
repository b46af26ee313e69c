// Exceptions can't pass through libxml2, which is written in C: they are kept until it has returned.
#pragma once

#include <exception>

namespace standin::documents {

class KeptException {
 public:
  // Does nothing after an exception.
  template <typename Function>
  void guard(Function function) noexcept {
    if (exception_) return;
    try {
      function();
    } catch (...) {
      exception_ = std::current_exception();
    }
  }

  void rethrow() const {
    if (exception_) std::rethrow_exception(exception_);
  }

 private:
  std::exception_ptr exception_;
};

}  // namespace standin::documents
