#include "tests/rig/service/TestClient.hpp"

#include <httplib.h>

#include <thread>

namespace karvex::rig {
TestClient::TestClient(const std::string& baseAddress, std::filesystem::path trusted)
    : port(std::stoi(baseAddress.substr(baseAddress.rfind(':') + 1))), caFile(std::move(trusted)) {}

Reply TestClient::send(const std::string& method, const std::string& path, const std::string& contentType,
                       const std::string& body) const {
  httplib::SSLClient client(host, port);
  client.set_ca_cert_path(caFile.string());
  client.enable_server_certificate_verification(true);
  client.set_connection_timeout(60);
  client.set_read_timeout(patience);
  Reply reply;
  httplib::Request request;
  request.method = method;
  request.path = path;
  request.body = body;
  if (!contentType.empty()) {
    request.set_header("Content-Type", contentType);
  }
  request.response_handler = [&reply](const httplib::Response& head) {
    reply.status = head.status;
    reply.isLengthPromised = head.has_header("Content-Length");
    return true;
  };
  request.content_receiver = [&](const char* data, std::size_t size, std::uint64_t, std::uint64_t) {
    reply.body.append(data, size);
    return reply.body.size() < largestBody;
  };
  const auto result = client.send(request);
  if (!result) {
    reply.error = httplib::to_string(result.error());
  }
  return reply;
}

bool comesTrue(const std::function<bool()>& condition) {
  using namespace std::chrono_literals;
  const auto deadline = std::chrono::steady_clock::now() + 60s;
  while (!condition() && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(1ms);
  }
  return condition();
}

}  // namespace karvex::rig
