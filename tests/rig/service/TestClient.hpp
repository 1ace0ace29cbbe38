#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>

#include "rig/service/EmbeddedService.hpp"

namespace karvex::rig {

/// What a client saw of an answer.
struct Reply {
  int status = 0;                 ///< 0 if no answer began
  bool isLengthPromised = false;  ///< by the head
  std::string body;               ///< as much as came
  std::string error;              ///< empty if the answer came whole

  bool isWhole() const { return status != 0 && error.empty(); }
};

/// One client of the HTTP library's own, with verified TLS. Each request has a connection of its own.
struct TestClient {
  explicit TestClient(const EmbeddedService& service) : TestClient(service.baseAddress(), service.caFile()) {}
  TestClient(const std::string& baseAddress, std::filesystem::path trusted);

  Reply get(const std::string& path) const { return send("GET", path, "", ""); }
  Reply post(const std::string& path, const std::string& contentType = "",
             const std::string& body = "") const {
    return send("POST", path, contentType, body);
  }
  Reply send(const std::string& method, const std::string& path, const std::string& contentType,
             const std::string& body) const;

  std::string host = "127.0.0.1";
  int port = 0;
  std::filesystem::path caFile;
  std::chrono::milliseconds patience{60'000};     ///< for the next byte of the answer, in real time
  std::size_t largestBody = 256UL * 1024 * 1024;  ///< after which the client leaves
};

/// Waits for real until the condition holds, for a minute at most; gives what it is then.
bool comesTrue(const std::function<bool()>& condition);

}  // namespace karvex::rig
