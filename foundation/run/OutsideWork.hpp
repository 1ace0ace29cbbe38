#pragma once

#include <cstdint>

namespace karvex::foundation {

/// Tells a runtime of work on threads that are not its own, such as a transfer that waits for a socket. On
/// the machine's own clock it makes no difference. Virtual time stands still while any such work is active: a
/// transfer over the loopback takes no virtual time, however slow the machine is, and no time-out can
/// overtake it. The far side of the work, when it is simulated, says when it lets the near side wait on
/// purpose; only then may time go on. All operations may be called on any thread.
class OutsideWork {
 public:
  /// Names one piece of work. 0 is none.
  using Ticket = std::uint64_t;

  virtual ~OutsideWork() = default;

  /// The work begins, and is active.
  virtual Ticket begin() = 0;

  /// Gives the work a name by which the far side knows it, for example the port number of its connection. A
  /// name belongs to the piece of work that was given it last.
  virtual void setName(Ticket ticket, std::uint64_t name) = 0;

  /// The work is over. To be called behind the post that hands its result on, so that no time passes in
  /// between.
  virtual void end(Ticket ticket) = 0;

  /// The far side lets the work of that name wait. Without such work, nothing happens.
  virtual void pause(std::uint64_t name) = 0;

  /// The work is active again, by its name or its ticket. Nothing happens if it is over.
  virtual void resume(std::uint64_t name) = 0;
  virtual void resumeTicket(Ticket ticket) = 0;
};

}  // namespace karvex::foundation
