#include "app/SingleInstance.hpp"

#include <QDataStream>
#include <QElapsedTimer>
#include <QLocalSocket>
#include <QThread>
#include <chrono>
#include <utility>

namespace karvex::app {
namespace {

/// Far more than a URL or a token has; a message that claims more is nobody's of ours.
constexpr qint64 mostBytes = 64 * 1024;

/// How long a later start waits for the first, which may still be on its way to listening.
constexpr std::chrono::milliseconds patience{3000};
constexpr std::chrono::milliseconds betweenTries{50};

constexpr auto format = QDataStream::Qt_6_0;

}  // namespace

SingleInstance::SingleInstance(const QString& name, const QString& directory)
    : socketPath_(directory + u'/' + name + QStringLiteral(".socket")),
      lock_(directory + u'/' + name + QStringLiteral(".lock")) {
  lock_.setStaleLockTime(0);  // Only a process that has gone gives its lock up, however long it has run.
  isFirst_ = lock_.tryLock() || lock_.error() != QLockFile::LockFailedError;
}

void SingleInstance::listen(std::function<void(const Handover&)> receive) {
  receive_ = std::move(receive);
  QObject::connect(&server_, &QLocalServer::newConnection, &server_, [this] {
    while (auto* socket = server_.nextPendingConnection()) {
      QObject::connect(socket, &QLocalSocket::readyRead, socket, [this, socket] { read(*socket); });
      QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
      read(*socket);
    }
  });
  server_.setSocketOptions(QLocalServer::UserAccessOption);
  QLocalServer::removeServer(
      socketPath_);  // Left behind by one that was killed; the lock says that it is nobody's.
  server_.listen(socketPath_);
}

void SingleInstance::read(QLocalSocket& socket) {
  if (socket.bytesAvailable() > mostBytes) {
    socket.abort();
    return;
  }
  QDataStream stream(&socket);
  stream.setVersion(format);
  Handover handover;
  stream.startTransaction();
  stream >> handover.url >> handover.activationToken;
  if (stream.commitTransaction()) {
    receive_(handover);
    socket.disconnectFromServer();
  }
}

bool SingleInstance::handOver(const Handover& handover) const {
  QElapsedTimer timer;
  timer.start();
  QLocalSocket socket;
  const auto left = [&timer] { return static_cast<int>(patience.count() - timer.elapsed()); };
  while (left() > 0) {
    socket.connectToServer(socketPath_);
    if (socket.waitForConnected(left())) {
      QDataStream stream(&socket);
      stream.setVersion(format);
      stream << handover.url << handover.activationToken;
      // The first hangs up when it has read it.
      return socket.waitForDisconnected(left()) || socket.state() == QLocalSocket::UnconnectedState;
    }
    QThread::msleep(static_cast<unsigned long>(betweenTries.count()));
  }
  return false;
}

}  // namespace karvex::app
