#include "service/FirmwareService.hpp"

#include <utility>

#include "service/FormText.hpp"

namespace karvex::service {
namespace {

using foundation::Task;
using foundation::UrlRequest;

UrlRequest formPost(const std::string& url, const std::vector<FormItem>& items) {
  return {.url = url, .method = "POST", .headers = {}, .body = formText(items)};
}

}  // namespace

FirmwareService::FirmwareService(foundation::UrlSession& session, ServiceAddress address)
    : session_(session), address_(std::move(address)) {}

bool FirmwareService::canAskForDescriptors() const {
  return foundation::isUrl(address_.loaderInfo);
}

bool FirmwareService::canReportCompletion() const {
  return foundation::isUrl(address_.uploadComplete);
}

Task<std::string> FirmwareService::requestDescriptors() {
  auto request = formPost(address_.loaderInfo, {});
  auto response = co_await session_.send(std::move(request));
  co_return std::move(response.body);
}

Task<> FirmwareService::reportCompletion(UploadCompletion completion) {
  auto request =
      formPost(address_.uploadComplete, {
                                            {"DEVICE_SERIAL_NUMBER", completion.deviceSerialNumber},
                                            {"DEVICE_FIRMWARE_NAME", completion.firmwareName},
                                            {"DEVICE_FIRMWARE_VERSION", completion.firmwareVersion},
                                        });
  co_await session_.send(std::move(request));
}

}  // namespace karvex::service
