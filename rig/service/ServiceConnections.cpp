#include "rig/service/ServiceConnections.hpp"

#include <sys/socket.h>

namespace karvex::rig {

/// Where a context keeps the object that watches it.
int ServiceConnections::contextIndex() {
  static const int index = SSL_CTX_get_ex_new_index(0, nullptr, nullptr, nullptr, nullptr);
  return index;
}

/// Where a connection keeps the same, for noteEnd(), which sees every connection of the process.
int ServiceConnections::connectionIndex() {
  static const int index = SSL_get_ex_new_index(0, nullptr, nullptr, nullptr, &ServiceConnections::noteEnd);
  return index;
}

void ServiceConnections::watch(SSL_CTX& context) {
  connectionIndex();
  SSL_CTX_set_ex_data(&context, contextIndex(), this);
  SSL_CTX_set_info_callback(&context, &ServiceConnections::noteState);
}

void ServiceConnections::noteState(const SSL* connection, int where, int /*result*/) {
  if ((where & SSL_CB_HANDSHAKE_START) == 0) {
    return;
  }
  auto* owner =
      static_cast<ServiceConnections*>(SSL_CTX_get_ex_data(SSL_get_SSL_CTX(connection), contextIndex()));
  // The library hands connections to this callback as const, although they are the caller's own.
  SSL_set_ex_data(const_cast<SSL*>(connection), connectionIndex(), owner);
  owner->add(connection);
}

/// The library calls this while the socket is still open, so its number can't have gone to somebody else yet.
void ServiceConnections::noteEnd(void* connection, void* owner, CRYPTO_EX_DATA* /*data*/, int /*index*/,
                                 long /*number*/, void* /*pointer*/) {
  if (owner != nullptr) {
    static_cast<ServiceConnections*>(owner)->remove(connection);
  }
}

void ServiceConnections::add(const SSL* connection) {
  const std::lock_guard lock(mutex_);
  const int socket = SSL_get_fd(connection);
  sockets_[connection] = socket;
  if (isClosing_) {
    ::shutdown(socket, SHUT_RDWR);
  }
}

void ServiceConnections::remove(const void* connection) {
  const std::lock_guard lock(mutex_);
  sockets_.erase(connection);
}

void ServiceConnections::closeAll() {
  const std::lock_guard lock(mutex_);
  isClosing_ = true;
  for (const auto& [connection, socket] : sockets_) {
    ::shutdown(socket, SHUT_RDWR);
  }
}

std::size_t ServiceConnections::count() const {
  const std::lock_guard lock(mutex_);
  return sockets_.size();
}

}  // namespace karvex::rig
