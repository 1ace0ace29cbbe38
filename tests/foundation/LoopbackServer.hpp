#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "tests/foundation/TestCertificates.hpp"

namespace karvex::foundation {

/// A server on 127.0.0.1 that says to whoever connects just what a test wants it to, byte for byte,
/// well-behaved or not. Each connection has a thread.
class LoopbackServer {
 public:
  class Connection {
   public:
    virtual ~Connection() = default;

    /// The next request as it came, head and body (by its Content-Length). Empty if there is none any more.
    virtual std::string readRequest() = 0;

    /// Reads so many bytes of what else comes and drops them. False if the other side has gone.
    virtual bool skip(std::size_t count) = 0;

    /// False if the other side has gone.
    virtual bool write(std::string_view bytes) = 0;

    /// Blocks until the other side has closed the connection, or the server ends.
    virtual void awaitEnd() = 0;

    /// Ends the connection now and the hard way (a TCP reset): the other side's next operation fails.
    virtual void reset() = 0;

    virtual std::uint16_t peerPort() const = 0;
  };

  /// Called on the thread of a connection. Its return ends the connection.
  using Handler = std::function<void(Connection&)>;

  /// Speaks TLS if it has an identity to show.
  explicit LoopbackServer(Handler handler, const std::optional<ServerIdentity>& identity = std::nullopt);
  ~LoopbackServer();
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;

  std::uint16_t port() const;
  std::string url(std::string_view path) const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

/// A whole answer. The extra header lines end with CR LF each.
std::string answer(int status, std::string_view body, std::string_view extraHeaders = "");

}  // namespace karvex::foundation
