#include "app/diagnosis/ServiceSurvey.hpp"

#include <arpa/inet.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <system_error>
#include <utility>

#include "foundation/net/Url.hpp"
#include "service/DescriptorDecoder.hpp"
#include "service/FirmwareService.hpp"

namespace karvex::app {
namespace {

using Result = CheckStep::Result;
using Addresses = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

constexpr int connectTimeOut = 10'000;  ///< in milliseconds

bool isProxySet() {
  for (const char* name : {"https_proxy", "HTTPS_PROXY", "http_proxy", "all_proxy", "ALL_PROXY"}) {
    const char* const value =
        std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nobody sets the environment
    if (value != nullptr && *value != '\0') {
      return true;
    }
  }
  return false;
}

/// The port in the URL, or the one that its scheme has.
std::string portOf(std::string_view url) {
  const auto begin = url.find("://");
  auto authority = begin == std::string_view::npos ? url : url.substr(begin + 3);
  authority = authority.substr(0, authority.find('/'));
  const auto digits = authority.find_last_not_of("0123456789");
  if (digits != std::string_view::npos && authority[digits] == ':' && digits + 1 < authority.size()) {
    return std::string(authority.substr(digits + 1));
  }
  return foundation::isSecureUrl(url) ? "443" : "80";
}

Addresses resolve(const std::string& url, CheckStep& step) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  const int error = getaddrinfo(foundation::hostOf(url).c_str(), portOf(url).c_str(), &hints, &found);
  step.result = error == 0 ? Result::well : Result::failed;
  if (error != 0) {
    step.detail = gai_strerror(error);
    return {nullptr, &freeaddrinfo};
  }
  std::array<char, NI_MAXHOST> text{};
  getnameinfo(found->ai_addr, found->ai_addrlen, text.data(), text.size(), nullptr, 0, NI_NUMERICHOST);
  step.detail = text.data();
  return {found, &freeaddrinfo};
}

/// 0, or why no connection came about in time.
int connectionError(const addrinfo& address) {
  const int descriptor =
      socket(address.ai_family, address.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, address.ai_protocol);
  if (descriptor < 0) {
    return errno;
  }
  int error = connect(descriptor, address.ai_addr, address.ai_addrlen) == 0 ? 0 : errno;
  if (error == EINPROGRESS) {
    pollfd socket{.fd = descriptor, .events = POLLOUT, .revents = 0};
    socklen_t length = sizeof error;
    if (poll(&socket, 1, connectTimeOut) != 1) {
      error = ETIMEDOUT;
    } else {
      getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &length);
    }
  }
  close(descriptor);
  return error;
}

void tryConnection(const addrinfo& first, CheckStep& step) {
  int error = 0;
  for (const addrinfo* address = &first; address != nullptr; address = address->ai_next) {
    error = connectionError(*address);
    if (error == 0) {
      break;
    }
  }
  step.result = error == 0 ? Result::well : Result::failed;
  step.detail = error == 0 ? "" : std::generic_category().message(error);
}

/// True for a transfer that failed before anything was asked. The library says so in words alone.
bool isFailureOfTls(std::string_view error) {
  return error.find("SSL") != std::string_view::npos || error.find("TLS") != std::string_view::npos ||
         error.find("certificate") != std::string_view::npos;
}

CheckStep stepOfAnswer(const std::string& answer) {
  const auto decoded = service::decodeDescriptors(answer);
  if (decoded.descriptors) {
    return {"list", Result::well, fmt::format("{} devices", decoded.descriptors->size())};
  }
  return {"list", Result::failed, decoded.messages.empty() ? "" : decoded.messages.front()};
}

/// The two steps that every transfer takes by itself.
bool reachesHost(const std::string& url, CheckStep& name, CheckStep& connection) {
  const auto addresses = resolve(url, name);
  if (addresses) {
    tryConnection(*addresses, connection);
  }
  return connection.result == Result::well;
}

}  // namespace

foundation::Task<ServiceDiagnosis> surveyService(foundation::Runtime& runtime,
                                                 foundation::UrlSession& session,
                                                 service::ServiceAddress address) {
  ServiceDiagnosis result{
      .address = foundation::withoutCredentials(address.loaderInfo), .usesProxy = isProxySet(), .steps = {}};
  CheckStep name{.name = "name"};
  CheckStep connection{.name = "connection"};
  CheckStep tls{.name = "TLS"};
  CheckStep list{.name = "list"};
  co_await foundation::resumeOn(runtime.globalQueue());
  const bool isReached = result.usesProxy || reachesHost(address.loaderInfo, name, connection);
  if (isReached) {
    const bool isSecure = foundation::isSecureUrl(address.loaderInfo);
    service::FirmwareService service(session, std::move(address));
    try {
      const auto answer = co_await service.requestDescriptors();
      tls.result = isSecure ? Result::well : Result::notTried;
      list = stepOfAnswer(answer);
    } catch (const foundation::UrlError& error) {
      auto& failed = isFailureOfTls(error.what()) ? tls : list;
      failed.result = Result::failed;
      failed.detail = error.what();
    }
  }
  result.steps = {name, connection, tls, list};
  co_return result;
}

}  // namespace karvex::app
