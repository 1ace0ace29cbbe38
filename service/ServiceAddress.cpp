#include "service/ServiceAddress.hpp"

namespace karvex::service {

ServiceAddress ServiceAddress::at(const std::string& base) {
  return {
      .loaderInfo = base + "/services/loaderInfo.php",
      .uploadComplete = base + "/services/uploadComplete.php",
      .deviceExplorer = base + "/services/deviceExplorer.php",
  };
}

const ServiceAddress& ServiceAddress::builtIn() {
  static const ServiceAddress address = at(KARVEX_SERVICE_ADDRESS);
  return address;
}

}  // namespace karvex::service
