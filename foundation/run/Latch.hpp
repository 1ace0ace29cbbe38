#pragma once

namespace karvex::foundation {

/// Where threads wait until another one lets them through. Closed at first; once open it stays so. Both
/// operations may be called on any thread.
class Latch {
 public:
  virtual ~Latch() = default;

  /// Blocks the calling thread until the latch is open.
  virtual void wait() = 0;

  /// Lets through who waits and who comes.
  virtual void open() = 0;
};

}  // namespace karvex::foundation
