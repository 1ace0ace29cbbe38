#include "rig/service/EmbeddedService.hpp"

#include <fmt/format.h>
#include <httplib.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <future>
#include <iterator>
#include <map>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <variant>

#include "foundation/files/TemporaryDirectory.hpp"
#include "loader/ascii.hpp"
#include "rig/service/CertificateAuthority.hpp"
#include "rig/service/DeliberateWaits.hpp"
#include "rig/service/FilesBelow.hpp"
#include "rig/service/ServiceAnswer.hpp"
#include "rig/service/ServiceConnections.hpp"

namespace karvex::rig {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view firmwarePrefix = "/firmware/";

/// Requests that can be under way at once, the silent ones included.
constexpr std::size_t serverThreads = 8;

/// Seconds of the machine's time that a client may take for its next byte. It only has to be longer than any
/// machine is slow: stopping the service doesn't wait for it.
constexpr time_t patience = 120;

std::optional<ServicePlace> placeOf(std::string_view path) {
  struct Named {
    std::string_view path;
    ServicePlace place;
  };
  constexpr std::array<Named, 3> exact = {{
      {"/services/loaderInfo.php", ServicePlace::list},
      {"/services/uploadComplete.php", ServicePlace::complete},
      {"/services/deviceExplorer.php", ServicePlace::report},
  }};
  const auto* found =
      std::find_if(exact.begin(), exact.end(), [path](const Named& one) { return one.path == path; });
  if (found != exact.end()) {
    return found->place;
  }
  return path.starts_with(firmwarePrefix) ? std::optional(ServicePlace::firmware) : std::nullopt;
}

/// The contents of a file below the directory.
std::optional<std::string> readBelow(const fs::path& directory, const std::string& name) {
  const auto file = fileBelow(directory, name);
  return file ? contentsOf(*file) : std::nullopt;
}

std::vector<std::pair<std::string, std::string>> sentHeaders(const httplib::Headers& headers) {
  // The library adds the two ends of the connection to what was sent.
  constexpr std::array<std::string_view, 4> ofTheLibrary = {"LOCAL_ADDR", "LOCAL_PORT", "REMOTE_ADDR",
                                                            "REMOTE_PORT"};
  std::vector<std::pair<std::string, std::string>> sent;
  std::copy_if(headers.begin(), headers.end(), std::back_inserter(sent), [&ofTheLibrary](const auto& header) {
    return std::find(ofTheLibrary.begin(), ofTheLibrary.end(), header.first) == ofTheLibrary.end();
  });
  return sent;
}

DeliberateWaits::Peer peerOf(const httplib::Request& request) {
  return {.socket = SSL_get_fd(request.ssl), .port = static_cast<std::uint64_t>(request.remote_port)};
}

/// Makes sure that the peer gets no byte more, and leaves the rest to the library.
void breakOff(const httplib::Request& request) {
  ::shutdown(SSL_get_fd(request.ssl), SHUT_RDWR);
}

void sendHalf(httplib::Response& response, const ServiceAnswer& answer) {
  const auto promised = std::max<std::size_t>(answer.body.size(), 1);
  response.set_content_provider(promised, answer.contentType,
                                [half = answer.body.substr(0, answer.body.size() / 2)](
                                    std::size_t offset, std::size_t, httplib::DataSink& sink) {
                                  return offset == 0 && !half.empty() && sink.write(half.data(), half.size());
                                });
}

void sendForEver(httplib::Response& response, const ServiceAnswer& answer) {
  response.set_chunked_content_provider(answer.contentType,
                                        [block = answer.body](std::size_t, httplib::DataSink& sink) {
                                          return sink.write(block.data(), block.size());
                                        });
}

void send(const httplib::Request& request, httplib::Response& response, const ServiceAnswer& answer) {
  response.status = answer.status;
  if (!answer.location.empty()) {
    response.set_header("Location", answer.location);
  }
  switch (answer.end) {
    case AnswerEnd::whole:
      return response.set_content(answer.body, answer.contentType);
    case AnswerEnd::cutOff:
      return sendHalf(response, answer);
    case AnswerEnd::endless:
      return sendForEver(response, answer);
    case AnswerEnd::never:
      return breakOff(request);
  }
}

}  // namespace

std::string_view ServiceRequest::header(std::string_view name) const {
  const auto found = std::find_if(headers.begin(), headers.end(), [&](const auto& header) {
    return loader::is_same_ascii(header.first, name);
  });
  return found != headers.end() ? std::string_view(found->second) : std::string_view();
}

class EmbeddedService::Server {
 public:
  Server(foundation::Runtime& runtime, fs::path firmwareDirectory, std::uint16_t wantedPort)
      : runtime_(runtime), firmwareDirectory_(std::move(firmwareDirectory)), waits_(runtime) {
    writeCaFile();
    route();
    const int port = http_.is_valid() ? bind(wantedPort) : -1;
    if (port <= 0) {
      throw std::runtime_error("The firmware service could not be started on 127.0.0.1" +
                               (wantedPort == 0 ? "." : fmt::format(", port {}.", wantedPort)));
    }
    baseAddress_ = fmt::format("https://127.0.0.1:{}", port);
    listen();
  }

  ~Server() { stop(); }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  const std::string& baseAddress() const { return baseAddress_; }
  const fs::path& caFile() const { return caFile_; }

  void setDevices(std::span<const ServedDevice> devices) {
    const std::lock_guard lock(mutex_);
    list_ = std::vector(devices.begin(), devices.end());
  }

  void setListText(std::string text) {
    const std::lock_guard lock(mutex_);
    list_ = std::move(text);
  }

  void setFaults(ServiceFaults faults) {
    const std::lock_guard lock(mutex_);
    faults_ = std::move(faults);
  }

  void setRequestListener(RequestListener listener) {
    const std::lock_guard lock(mutex_);
    listenToRequest_ = std::move(listener);
  }

  std::vector<ServiceRequest> requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
  }

  std::size_t openConnections() const { return connections_.count(); }

  /// Peers that wait are made active again before they can notice that their connection is gone, so that no
  /// virtual time passes in between.
  void stop() {
    std::call_once(stopped_, [this] {
      waits_.endAll();
      http_.stop();
      connections_.closeAll();
      listener_.join();
    });
  }

 private:
  void writeCaFile() {
    caFile_ = directory_.path() / "ca.pem";
    std::ofstream file(caFile_);
    file << authority_.pem();
    file.close();
    if (!file) {
      throw std::runtime_error("The certificate authority could not be written to " + caFile_.string());
    }
  }

  /// Each connection shows the certificate of its moment: it is chosen anew, and there are no sessions that a
  /// client could take up again without seeing it.
  bool setUpTls(SSL_CTX& context) {
    SSL_CTX_set_min_proto_version(&context, TLS1_2_VERSION);
    SSL_CTX_set_session_cache_mode(&context, SSL_SESS_CACHE_OFF);
    SSL_CTX_set_options(&context, SSL_OP_NO_TICKET);
    SSL_CTX_set_cert_cb(
        &context,
        [](SSL* connection, void* self) {
          return static_cast<Server*>(self)->showCertificate(connection) ? 1 : 0;
        },
        this);
    connections_.watch(context);
    return true;
  }

  bool showCertificate(SSL* connection) const {
    const std::lock_guard lock(mutex_);
    const auto& identity = faults_.hasWrongCertificate() ? untrustedIdentity_ : identity_;
    return SSL_use_certificate(connection, identity.certificate.get()) == 1 &&
           SSL_use_PrivateKey(connection, identity.key.get()) == 1;
  }

  void route() {
    const std::string anyPath = R"([\s\S]*)";
    const auto answer = [this](const httplib::Request& request, httplib::Response& response) {
      this->answer(request, response);
    };
    http_.Get(anyPath, answer);
    http_.Post(anyPath, answer);
    http_.Put(anyPath, answer);
    http_.Patch(anyPath, answer);
    http_.Delete(anyPath, answer);
    http_.Options(anyPath, answer);
    http_.set_keep_alive_max_count(1);
    http_.set_keep_alive_timeout(patience);
    http_.set_read_timeout(patience);
    http_.set_write_timeout(patience);
    // The library's own options would let another server share the port. With this one, connections that have
    // just ended don't keep it from being used again.
    http_.set_socket_options([](socket_t socket) {
      const int yes = 1;
      ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
  }

  /// The port, or -1. Any port for 0.
  int bind(std::uint16_t wantedPort) {
    const std::string host = "127.0.0.1";
    if (wantedPort == 0) {
      return http_.bind_to_any_port(host);
    }
    return http_.bind_to_port(host, wantedPort) ? wantedPort : -1;
  }

  /// Returns when the server can be stopped, which it can't before it runs.
  void listen() {
    const auto runs = std::make_shared<std::promise<void>>();
    http_.new_task_queue = [runs] {
      runs->set_value();
      return new httplib::ThreadPool(serverThreads);
    };
    listener_ = std::thread([this] { http_.listen_after_bind(); });
    runs->get_future().wait();
  }

  /// What holds for one request is settled when it is taken.
  struct Taken {
    std::optional<ServicePlace> place;
    std::chrono::milliseconds delay{};
    std::optional<ServiceFault> fault;
    std::string list;
  };

  /// Under the lock.
  void note(ServiceRequest request) {
    if (listenToRequest_) {
      listenToRequest_(request);
    } else {
      requests_.push_back(std::move(request));
    }
  }

  Taken take(const httplib::Request& request) {
    const auto place = placeOf(request.path);
    const std::lock_guard lock(mutex_);
    note({.time = runtime_.clock().now(),
          .method = request.method,
          .path = request.target,
          .headers = sentHeaders(request.headers),
          .body = request.body});
    if (place == ServicePlace::complete) {
      upgraded_[request.get_param_value("DEVICE_SERIAL_NUMBER")] =
          request.get_param_value("DEVICE_FIRMWARE_VERSION");
    }
    const auto* fault = faults_.answerAt(place);
    return {.place = place,
            .delay = faults_.delayAt(place),
            .fault = fault != nullptr ? std::optional(*fault) : std::nullopt,
            .list = place == ServicePlace::list ? currentList() : std::string()};
  }

  /// The list with the upgrades that were reported since the service started. Under the lock.
  std::string currentList() const {
    if (const auto* text = std::get_if<std::string>(&list_)) {
      return *text;
    }
    auto devices = std::get<std::vector<ServedDevice>>(list_);
    for (auto& device : devices) {
      if (const auto upgraded = upgraded_.find(device.deviceSerialNumber); upgraded != upgraded_.end()) {
        device.currentVersion = upgraded->second;
      }
    }
    return listText(devices);
  }

  void answer(const httplib::Request& request, httplib::Response& response) {
    const auto taken = take(request);
    if (taken.delay.count() > 0 && !waits_.wait(peerOf(request), taken.delay)) {
      return breakOff(request);
    }
    auto answer = properAnswer(request, taken);
    if (taken.fault) {
      answer = spoilAnswer(std::move(answer), *taken.fault);
    }
    if (answer.end == AnswerEnd::never) {
      waits_.wait(peerOf(request), std::nullopt);
    }
    send(request, response, answer);
  }

  ServiceAnswer properAnswer(const httplib::Request& request, const Taken& taken) const {
    if (!taken.place) {
      return errorPage(404, "Not Found");
    }
    if (request.method != (taken.place == ServicePlace::firmware ? "GET" : "POST")) {
      return errorPage(405, "Method Not Allowed");
    }
    switch (*taken.place) {
      case ServicePlace::list:
        return {.contentType = "application/json", .body = taken.list};
      case ServicePlace::complete:
      case ServicePlace::report:
        break;
      case ServicePlace::firmware:
        if (auto file = readBelow(firmwareDirectory_, request.path.substr(firmwarePrefix.size()))) {
          return {.contentType = "application/octet-stream", .body = std::move(*file)};
        }
        return errorPage(404, "Not Found");
    }
    return {};
  }

  foundation::Runtime& runtime_;
  const fs::path firmwareDirectory_;
  const foundation::TemporaryDirectory directory_;
  fs::path caFile_;
  const CertificateAuthority authority_{"Karvex rig"};
  const Identity identity_ = authority_.issueLocalServer();
  const Identity untrustedIdentity_ =
      CertificateAuthority("Karvex rig, not to be trusted").issueLocalServer();
  std::string baseAddress_;
  mutable std::mutex mutex_;
  ServiceFaults faults_;
  std::variant<std::vector<ServedDevice>, std::string> list_;
  std::map<std::string, std::string> upgraded_;  ///< the version that each device was upgraded to
  std::vector<ServiceRequest> requests_;
  RequestListener listenToRequest_;
  DeliberateWaits waits_;
  ServiceConnections connections_;
  httplib::SSLServer http_{[this](SSL_CTX& context) { return setUpTls(context); }};
  std::thread listener_;
  std::once_flag stopped_;
};

EmbeddedService::EmbeddedService(foundation::Runtime& runtime, fs::path firmwareDirectory, std::uint16_t port)
    : server_(std::make_unique<Server>(runtime, std::move(firmwareDirectory), port)) {}

EmbeddedService::~EmbeddedService() = default;

const std::string& EmbeddedService::baseAddress() const {
  return server_->baseAddress();
}

const fs::path& EmbeddedService::caFile() const {
  return server_->caFile();
}

foundation::TransferPolicy EmbeddedService::transferPolicy() const {
  return {.usesProxy = false, .certificateAuthorities = caFile()};
}

void EmbeddedService::setDevices(std::span<const ServedDevice> devices) {
  server_->setDevices(devices);
}

void EmbeddedService::setListText(std::string text) {
  server_->setListText(std::move(text));
}

void EmbeddedService::setFaults(ServiceFaults faults) {
  server_->setFaults(std::move(faults));
}

void EmbeddedService::setRequestListener(RequestListener listener) {
  server_->setRequestListener(std::move(listener));
}

std::vector<ServiceRequest> EmbeddedService::requests() const {
  return server_->requests();
}

std::size_t EmbeddedService::openConnections() const {
  return server_->openConnections();
}

void EmbeddedService::stop() {
  server_->stop();
}

}  // namespace karvex::rig
