#pragma once

#include <string>

#include "foundation/net/UrlSession.hpp"
#include "foundation/run/Task.hpp"
#include "service/ServiceAddress.hpp"

namespace karvex::service {

/// What is told when a device has been upgraded.
struct UploadCompletion {
  std::string deviceSerialNumber;
  std::string firmwareName;
  std::string firmwareVersion;
};

/// The exchanges with the firmware service, as they go over the wire. The HTTP status is not looked at:
/// whatever body comes back is the answer. The operations may be called on any thread; what awaits them goes
/// on on the global queue. They throw foundation::UrlError.
class FirmwareService {
 public:
  /// The session must outlive the service.
  FirmwareService(foundation::UrlSession& session, ServiceAddress address);

  /// Asks for the list of devices and firmware; gives the body of the answer.
  foundation::Task<std::string> requestDescriptors();

  /// Tells that a device has been upgraded.
  foundation::Task<> reportCompletion(UploadCompletion completion);

  /// False if the address's texts are no URLs; then nothing can be asked.
  bool canAskForDescriptors() const;
  bool canReportCompletion() const;

 private:
  foundation::UrlSession& session_;
  ServiceAddress address_;
};

}  // namespace karvex::service
