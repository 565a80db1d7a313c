#pragma once

namespace base {

/// Calls a function at the end of its own lifetime, however that comes.
template <typename TFunctor>
class TAtEnd {
 public:
  explicit TAtEnd(const TFunctor& theFunctor) : functor(theFunctor) {}
  ~TAtEnd() { functor(); }
  TAtEnd(const TAtEnd&) = delete;
  TAtEnd& operator=(const TAtEnd&) = delete;

 private:
  TFunctor functor;
};

}  // namespace base
