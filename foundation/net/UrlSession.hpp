#pragma once

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "foundation/net/TransferPolicy.hpp"
#include "foundation/net/Url.hpp"
#include "foundation/run/Runtime.hpp"
#include "foundation/run/Task.hpp"

namespace karvex::foundation {

/// What to ask of whom. A body without a Content-Type among the headers goes out as a form
/// (application/x-www-form-urlencoded). A HEAD request has no body. Let it be a variable: a braced temporary
/// in a co_await expression is destroyed twice by g++ 12.
struct UrlRequest {
  std::string url;
  std::string method = "GET";
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;
};

/// What came back, whatever its status: a 404 is an answer like any other.
struct UrlResponse {
  std::string url;  ///< where the answer came from, behind all redirects; without user and password
  long status = 0;  ///< HTTP status code (RFC 9110, 15)
  std::string body;
  /// One line for the log: URL and status.
  std::string description() const;
};

/// A transfer that failed. what() is for people: what went wrong, with the host. One line, at most 300 bytes.
class UrlError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Requests and downloads over HTTP and HTTPS. Certificates are verified; other schemes are refused, also in
/// redirects, and so is every redirect from https:// to http://. A proxy is taken from the environment, as
/// libcurl does, unless the policy says otherwise. Transfers run on a thread of the session's own and never
/// block a queue; what is awaited goes on on the global queue, also when it failed. The operations may be
/// called on any thread.
///
/// The idle time-out runs on the runtime's clock, the one for connecting on the machine's. A transfer is
/// OutsideWork; its name is the local port of its connection.
class UrlSession {
 public:
  /// The runtime must outlive the session. Transfers under way when the session goes fail at once.
  explicit UrlSession(Runtime& runtime, TransferPolicy policy = {});
  ~UrlSession();
  UrlSession(const UrlSession&) = delete;
  UrlSession& operator=(const UrlSession&) = delete;

  /// Sends the request and collects the answer. Throws UrlError.
  Task<UrlResponse> send(UrlRequest request);

  /// Fetches the URL into a new file that only this user can read, and gives its path. It lives in a
  /// directory of the session's own and is removed with the session. What the server answers is the file,
  /// whatever the status says. Throws UrlError, and then leaves no file.
  Task<std::filesystem::path> download(std::string url);

 private:
  class Transfers;
  std::shared_ptr<Transfers> transfers_;
};

}  // namespace karvex::foundation
