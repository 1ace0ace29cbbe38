#include "app/SingleInstance.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <QDataStream>
#include <QElapsedTimer>
#include <QFile>
#include <QLocalSocket>
#include <QThread>
#include <QTimer>
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <utility>

#include "foundation/Log.hpp"

namespace karvex::app {
namespace {

/// Far more than a URL or a token has; a message that claims more is nobody's of ours. A command line's
/// argument can't be longer on Linux (MAX_ARG_STRLEN).
constexpr qint64 mostBytes = 256 * 1024;

/// How long a later start waits for the first, which may still be on its way to listening; and how long the
/// first waits for a message that has begun.
constexpr std::chrono::milliseconds patience{3000};
constexpr std::chrono::milliseconds betweenTries{50};

/// What the first answers when it has taken a message.
constexpr char taken = '+';

constexpr auto format = QDataStream::Qt_6_0;

}  // namespace

SingleInstance::SingleInstance(const QString& name, const QString& directory) {
  if (directory.isEmpty()) {
    return;
  }
  socketPath_ = directory + u'/' + name + QStringLiteral(".socket");
  const auto lockPath = QFile::encodeName(directory + u'/' + name + QStringLiteral(".lock"));
  lock_ = ::open(lockPath.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
  isFirst_ = lock_ < 0 || flock(lock_, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

SingleInstance::~SingleInstance() {
  giveUp();
}

void SingleInstance::giveUp() {
  server_.close();
  if (lock_ >= 0) {
    ::close(std::exchange(lock_, -1));
  }
}

void SingleInstance::listen(std::function<void(const Handover&)> receive) {
  receive_ = std::move(receive);
  QObject::connect(&server_, &QLocalServer::newConnection, &server_, [this] {
    while (auto* socket = server_.nextPendingConnection()) {
      greet(*socket);
    }
  });
  server_.setSocketOptions(QLocalServer::UserAccessOption);
  // What a killed one left behind; the lock says that it is nobody's.
  QLocalServer::removeServer(socketPath_);
  if (!socketPath_.isEmpty() && !server_.listen(socketPath_)) {
    foundation::log::system("> KARVEX : A second start can't reach this one : " +
                            server_.errorString().toStdString());
  }
}

void SingleInstance::greet(QLocalSocket& socket) {
  QObject::connect(&socket, &QLocalSocket::readyRead, &socket, [this, &socket] { read(socket); });
  QObject::connect(&socket, &QLocalSocket::disconnected, &socket, &QObject::deleteLater);
  QTimer::singleShot(patience, &socket, [&socket] { socket.abort(); });
  read(socket);
}

void SingleInstance::read(QLocalSocket& socket) {
  QDataStream stream(&socket);
  stream.setVersion(format);
  Handover handover;
  stream.startTransaction();
  stream >> handover.url >> handover.activationToken;
  if (stream.commitTransaction()) {
    receive_(handover);
    socket.write(&taken, 1);
    socket.flush();  // At once, whatever this thread does next.
    socket.disconnectFromServer();
  } else if (stream.status() == QDataStream::ReadCorruptData || socket.bytesAvailable() > mostBytes) {
    socket.abort();
  }
}

bool SingleInstance::handOver(const Handover& handover) const {
  QElapsedTimer timer;
  timer.start();
  QLocalSocket socket;
  const auto left = [&timer] {
    return static_cast<int>(std::max<qint64>(patience.count() - timer.elapsed(), 0));
  };
  while (left() > 0) {
    socket.connectToServer(socketPath_);
    if (socket.waitForConnected(left())) {
      QDataStream stream(&socket);
      stream.setVersion(format);
      stream << handover.url << handover.activationToken;
      char answer = 0;
      while (socket.bytesAvailable() == 0 && socket.waitForReadyRead(left())) {
      }
      return socket.read(&answer, 1) == 1 && answer == taken;
    }
    QThread::msleep(static_cast<unsigned long>(betweenTries.count()));
  }
  return false;
}

}  // namespace karvex::app
