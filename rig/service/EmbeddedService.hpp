#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/net/TransferPolicy.hpp"
#include "foundation/run/Runtime.hpp"
#include "rig/service/ServedDevice.hpp"
#include "rig/service/ServiceFaults.hpp"

namespace karvex::rig {

/// What the service was sent, once the whole of it was there.
struct ServiceRequest {
  foundation::TimePoint time;
  std::string method;
  std::string path;  ///< as sent, with its percent escapes and its query
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;

  /// The value of the header of that name, in whatever case (RFC 9110, 5.1); empty if there is none.
  std::string_view header(std::string_view name) const;
};

/// A firmware service on this machine: a real server for HTTPS (RFC 9110, RFC 8446) on a port of 127.0.0.1.
/// It answers
///
///     POST /services/loaderInfo.php       with the list of devices,
///     POST /services/uploadComplete.php   and
///     POST /services/deviceExplorer.php   with a line of text,
///     GET  /firmware/PATH                 with that file below the directory of the firmware files,
///
/// writes down whatever it is sent, and misbehaves as it is told. It runs on threads of its own and never
/// sleeps: where it lets a client wait, that is in the runtime's time. For virtual time, a client names its
/// outside work by the number of its local port. A connection carries one request.
///
/// All operations may be called on any thread. The process ignores SIGPIPE from the first service on.
class EmbeddedService {
 public:
  using RequestListener = std::function<void(const ServiceRequest&)>;

  /// Starts the service, with an empty list and without faults. The system chooses the port if it is 0. The
  /// runtime must outlive the service. Throws std::runtime_error if it can't be started.
  EmbeddedService(foundation::Runtime& runtime, std::filesystem::path firmwareDirectory,
                  std::uint16_t port = 0);

  /// Stops the service.
  ~EmbeddedService();
  EmbeddedService(const EmbeddedService&) = delete;
  EmbeddedService& operator=(const EmbeddedService&) = delete;

  /// "https://127.0.0.1:PORT"
  const std::string& baseAddress() const;

  /// The certificate authority to trust, as PEM text in a file that only this user can read. It goes with the
  /// object.
  const std::filesystem::path& caFile() const;

  /// How this program's own sessions reach the service: with trust in its authority, and past any proxy.
  foundation::TransferPolicy transferPolicy() const;

  /// What the list request is answered with from now on: devices, or any text. A device whose upgrade
  /// was ever reported to the service, however that was answered, is listed with the version reported.
  void setDevices(std::span<const ServedDevice> devices);
  void setListText(std::string text);

  /// How the service misbehaves from now on. Requests that it has taken already stay under the old faults.
  void setFaults(ServiceFaults faults);

  /// From now on each request is handed over, on a thread of the service and one at a time, instead of being
  /// kept. The listener must not call the service.
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it locks.
  void setRequestListener(RequestListener listener);

  /// What was sent until now and kept, in the order of its arrival.
  std::vector<ServiceRequest> requests() const;

  /// The connections that are open, those in the middle of their handshake included.
  std::size_t openConnections() const;

  /// Closes the port and every connection, whatever is under way on it, and waits until nothing is left
  /// running. What was sent can still be read.
  void stop();

 private:
  class Server;
  std::unique_ptr<Server> server_;
};

}  // namespace karvex::rig
