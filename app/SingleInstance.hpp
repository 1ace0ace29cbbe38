#pragma once

#include <QByteArray>
#include <QLocalServer>
#include <QString>
#include <functional>

namespace karvex::app {

/// What a program that is started again hands to the one that runs already.
struct Handover {
  QByteArray url;              ///< empty if it was started without one
  QByteArray activationToken;  ///< by which a Wayland compositor lets the window come to the front, or empty
};

/// Lets one program of that name run for each user. A lock, which the system takes back when its process ends
/// in whatever way, says who is the first; the two ends meet at a socket beside it, in the user's runtime
/// directory, which nobody else may open. The toolkit's thread; needs a QCoreApplication.
class SingleInstance {
 public:
  /// `directory` is the user's runtime directory.
  SingleInstance(const QString& name, const QString& directory);
  ~SingleInstance();
  SingleInstance(const SingleInstance&) = delete;
  SingleInstance& operator=(const SingleInstance&) = delete;

  /// True if no other program of that name runs; it holds until giveUp(). Also true where there is no such
  /// directory, or it can't be written: two windows are better than none.
  bool isFirst() const { return isFirst_; }

  /// For the first: `receive` is called for each later start, from the event loop. A start whose message is
  /// broken, too long or late is hung up on.
  void listen(std::function<void(const Handover&)> receive);

  /// For the first: the next start is a first. The destructor does the same.
  void giveUp();

  /// For a later one: hands it to the first. False if that doesn't take it within some seconds.
  bool handOver(const Handover& handover) const;

 private:
  void greet(QLocalSocket& socket);
  void read(QLocalSocket& socket);

  QString socketPath_;
  int lock_ = -1;  // The descriptor that holds it.
  bool isFirst_ = true;
  QLocalServer server_;
  std::function<void(const Handover&)> receive_;
};

}  // namespace karvex::app
