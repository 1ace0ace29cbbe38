#pragma once

#include <openssl/ssl.h>

#include <map>
#include <mutex>

namespace karvex::rig {

/// The TLS connections that a server has open, from the first byte of the handshake on, so that they can be
/// closed from outside: a server that waits for a client's next byte, or for room to send, would otherwise
/// wait as long as the client likes. All operations may be called on any thread.
class ServiceConnections {
 public:
  ServiceConnections() = default;
  ServiceConnections(const ServiceConnections&) = delete;
  ServiceConnections& operator=(const ServiceConnections&) = delete;

  /// From now on the connections of that context are known here. The context's info callback is used for it.
  /// All of its connections must be gone before this object is.
  void watch(SSL_CTX& context);

  /// Shuts down the sockets of the connections that there are, and of each that comes later.
  void closeAll();

  std::size_t count() const;

 private:
  static int contextIndex();
  static int connectionIndex();
  static void noteState(const SSL* connection, int where, int result);
  static void noteEnd(void* connection, void* owner, CRYPTO_EX_DATA* data, int index, long number,
                      void* pointer);

  void add(const SSL* connection);
  void remove(const void* connection);

  mutable std::mutex mutex_;
  bool isClosing_ = false;
  std::map<const void*, int> sockets_;  ///< by the address of the connection
};

}  // namespace karvex::rig
