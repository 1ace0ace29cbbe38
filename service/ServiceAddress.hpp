#pragma once

#include <string>

namespace karvex::service {

/// The firmware service's URLs, one for each of its paths.
struct ServiceAddress {
  std::string loaderInfo;
  std::string uploadComplete;
  std::string deviceExplorer;

  /// The paths behind a base address such as "https://firmware.example.com".
  static ServiceAddress at(const std::string& base);

  /// The service that this program was built for.
  static const ServiceAddress& builtIn();
};

}  // namespace karvex::service
