#pragma once

#include <QLocalServer>
#include <QLockFile>
#include <QString>
#include <functional>
#include <memory>

namespace karvex::app {

/// What a program that is started again hands to the one that runs already.
struct Handover {
  QString url;  ///< empty if it was started without one
  QString
      activationToken;  ///< by which a Wayland compositor lets the window come to the front; empty elsewhere
};

/// Lets one program of that name run for each user. The two ends meet at a socket in the user's runtime
/// directory, which nobody else may open. The toolkit's thread; needs a QCoreApplication.
class SingleInstance {
 public:
  /// `directory` is the user's runtime directory.
  SingleInstance(const QString& name, const QString& directory);

  /// True if no other program of that name runs; it holds until the end of this object. Also true where the
  /// directory can't be written: two windows are better than none.
  bool isFirst() const { return isFirst_; }

  /// For the first: `receive` is called for each later start, from the event loop.
  void listen(std::function<void(const Handover&)> receive);

  /// For a later one: hands it to the first. False if that doesn't take it within some seconds.
  bool handOver(const Handover& handover) const;

 private:
  void read(QLocalSocket& socket);

  QString socketPath_;
  QLockFile lock_;
  bool isFirst_;
  QLocalServer server_;
  std::function<void(const Handover&)> receive_;
};

}  // namespace karvex::app
