#include "tests/foundation/LoopbackServer.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <mutex>
#include <set>
#include <system_error>
#include <thread>
#include <vector>

namespace karvex::foundation {
namespace {

template <auto release>
struct Release {
  template <typename Resource>
  void operator()(Resource* resource) const {
    release(resource);
  }
};
using Context = std::unique_ptr<SSL_CTX, Release<&SSL_CTX_free>>;
using Session = std::unique_ptr<SSL, Release<&SSL_free>>;

Context makeContext(const ServerIdentity& identity) {
  const auto memory = [](const std::string& text) {
    return std::unique_ptr<BIO, Release<&BIO_free>>(
        BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
  };
  const std::unique_ptr<X509, Release<&X509_free>> certificate(
      PEM_read_bio_X509(memory(identity.certificate).get(), nullptr, nullptr, nullptr));
  const std::unique_ptr<EVP_PKEY, Release<&EVP_PKEY_free>> key(
      PEM_read_bio_PrivateKey(memory(identity.key).get(), nullptr, nullptr, nullptr));
  Context context(SSL_CTX_new(TLS_server_method()));
  if (SSL_CTX_use_certificate(context.get(), certificate.get()) != 1 ||
      SSL_CTX_use_PrivateKey(context.get(), key.get()) != 1) {
    throw std::runtime_error("the identity is not one");
  }
  return context;
}

std::size_t contentLength(std::string_view head) {
  constexpr std::string_view name = "\r\nContent-Length: ";
  const auto at = head.find(name);
  std::size_t length = 0;
  if (at != std::string_view::npos) {
    std::from_chars(head.data() + at + name.size(), head.data() + head.size(), length);
  }
  return length;
}

class SocketConnection final : public LoopbackServer::Connection {
 public:
  SocketConnection(int descriptor, std::uint16_t peerPort, SSL_CTX* context)
      : descriptor_(descriptor), peerPort_(peerPort) {
    if (context != nullptr) {
      session_.reset(SSL_new(context));
      SSL_set_fd(session_.get(), descriptor);
      isGone_ = SSL_accept(session_.get()) != 1;
    }
  }
  ~SocketConnection() override {
    if (session_ && !isGone_) {
      SSL_shutdown(session_.get());
    }
  }
  SocketConnection(const SocketConnection&) = delete;
  SocketConnection& operator=(const SocketConnection&) = delete;

  bool isGone() const { return isGone_; }

  std::string readRequest() override {
    std::size_t end = std::string::npos;
    while ((end = received_.find("\r\n\r\n")) == std::string::npos) {
      if (!receive()) {
        return {};
      }
    }
    const auto size = end + 4 + contentLength(received_.substr(0, end));
    while (received_.size() < size) {
      if (!receive()) {
        return {};
      }
    }
    auto request = received_.substr(0, size);
    received_.erase(0, size);
    return request;
  }

  bool skip(std::size_t count) override {
    while (received_.size() < count && receive()) {
    }
    const bool isComplete = received_.size() >= count;
    received_.erase(0, count);
    return isComplete;
  }

  bool write(std::string_view bytes) override {
    while (!bytes.empty() && !isGone_) {
      const auto written = session_ ? SSL_write(session_.get(), bytes.data(), static_cast<int>(bytes.size()))
                                    : ::send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      isGone_ = written <= 0;
      bytes.remove_prefix(isGone_ ? 0 : static_cast<std::size_t>(written));
    }
    return !isGone_;
  }

  void awaitEnd() override {
    while (receive()) {
    }
  }

  void reset() override {
    const sockaddr nobody{.sa_family = AF_UNSPEC, .sa_data = {}};
    ::connect(descriptor_, &nobody, sizeof nobody);
    isGone_ = true;
  }

  std::uint16_t peerPort() const override { return peerPort_; }

 private:
  bool receive() {
    std::array<char, 16384> buffer;
    const auto count = session_ ? SSL_read(session_.get(), buffer.data(), static_cast<int>(buffer.size()))
                                : ::recv(descriptor_, buffer.data(), buffer.size(), 0);
    if (count <= 0) {
      isGone_ = true;
      return false;
    }
    received_.append(buffer.data(), static_cast<std::size_t>(count));
    return true;
  }

  int descriptor_;
  std::uint16_t peerPort_;
  Session session_;
  bool isGone_ = false;
  std::string received_;
};

}  // namespace

struct LoopbackServer::State {
  Handler handler;
  Context context;
  int listener = -1;
  std::uint16_t port = 0;
  std::mutex mutex;
  bool isEnding = false;
  std::set<int> open;
  std::vector<std::thread> connections;
  std::thread acceptor;

  void listen();
  void acceptAll();
  void serve(int descriptor, std::uint16_t peerPort);
};

void LoopbackServer::State::listen() {
  listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  if (listener < 0 || ::bind(listener, generic, size) != 0 || ::listen(listener, 16) != 0 ||
      ::getsockname(listener, generic, &size) != 0) {
    throw std::system_error(errno, std::generic_category(), "no socket to listen at");
  }
  port = ntohs(address.sin_port);
}

void LoopbackServer::State::acceptAll() {
  while (true) {
    sockaddr_in peer{};
    socklen_t size = sizeof peer;
    const int descriptor = ::accept4(listener, reinterpret_cast<sockaddr*>(&peer), &size, SOCK_CLOEXEC);
    const std::lock_guard lock(mutex);
    if (descriptor < 0 || isEnding) {
      ::close(descriptor);
      return;
    }
    open.insert(descriptor);
    connections.emplace_back(
        [this, descriptor, peerPort = ntohs(peer.sin_port)] { serve(descriptor, peerPort); });
  }
}

void LoopbackServer::State::serve(int descriptor, std::uint16_t peerPort) {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  {
    SocketConnection connection(descriptor, peerPort, context.get());
    if (!connection.isGone()) {
      handler(connection);
    }
  }
  const std::lock_guard lock(mutex);
  open.erase(descriptor);
  ::close(descriptor);
}

LoopbackServer::LoopbackServer(Handler handler, const std::optional<ServerIdentity>& identity)
    : state_(std::make_unique<State>()) {
  state_->handler = std::move(handler);
  if (identity) {
    state_->context = makeContext(*identity);
  }
  state_->listen();
  state_->acceptor = std::thread([this] { state_->acceptAll(); });
}

LoopbackServer::~LoopbackServer() {
  {
    const std::lock_guard lock(state_->mutex);
    state_->isEnding = true;
    ::shutdown(state_->listener, SHUT_RDWR);
    for (const int descriptor : state_->open) {
      ::shutdown(descriptor, SHUT_RDWR);
    }
  }
  state_->acceptor.join();
  for (auto& connection : state_->connections) {
    connection.join();
  }
  ::close(state_->listener);
}

std::uint16_t LoopbackServer::port() const {
  return state_->port;
}

std::string LoopbackServer::url(std::string_view path) const {
  return (state_->context ? "https://127.0.0.1:" : "http://127.0.0.1:") + std::to_string(state_->port) +
         std::string(path);
}

std::string answer(int status, std::string_view body, std::string_view extraHeaders) {
  return "HTTP/1.1 " + std::to_string(status) + " Some\r\n" + std::string(extraHeaders) +
         "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + std::string(body);
}

}  // namespace karvex::foundation
