#pragma once

#include <curl/curl.h>

#include <array>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/net/DownloadFile.hpp"
#include "foundation/net/TransferPolicy.hpp"
#include "foundation/net/UrlSession.hpp"
#include "foundation/run/OutsideWork.hpp"
#include "foundation/run/Queue.hpp"

namespace karvex::foundation {

/// Deletes what a C library made.
template <auto release>
struct Release {
  template <typename Resource>
  void operator()(Resource* resource) const {
    release(resource);
  }
};

/// One exchange with a server, on libcurl. It belongs to the thread of the session from its start until its
/// coroutine goes on.
class UrlTransfer {
 public:
  UrlTransfer(UrlRequest itsRequest, std::size_t itsLargest)
      : request(std::move(itsRequest)), largest(itsLargest) {}

  /// Makes `easy`, ready to go; the answer's body goes into the file if there is one. Gives the cause why it
  /// can't be, else an empty text.
  std::string open(const TransferPolicy& policy, OutsideWork& work);

  /// Takes down the outcome, now that libcurl is done. Gives the cause if it is a failure, else an empty
  /// text.
  std::string close(CURLcode code, const TransferPolicy& policy);

  /// A failure as the caller reads it: the cause, and the host that it happened at if that is known.
  std::string failureText(const std::string& cause) const;

  const UrlRequest request;
  const std::size_t largest;  ///< bytes of the answer

  // The outcome. Without an error, one of the others.
  std::string error;
  UrlResponse response;
  std::filesystem::path path;

  // For the session.
  Job resume;
  OutsideWork::Ticket ticket = 0;
  TimePoint begin;
  TimePoint lastMove;
  bool hasMoved = false;  ///< bytes have, since the session last looked
  bool isDownload = false;
  std::optional<DownloadFile> file;
  std::unique_ptr<CURL, Release<&curl_easy_cleanup>> easy;

 private:
  static std::size_t onBody(char* data, std::size_t one, std::size_t size, void* self);
  static std::size_t onHeader(char* data, std::size_t one, std::size_t size, void* self);
  static int onProgress(void* self, curl_off_t toCome, curl_off_t downloaded, curl_off_t toSend,
                        curl_off_t uploaded);
  static int onConnected(void* self, char* address, char* localAddress, int port, int localPort);

  bool staySecure();
  bool take(std::string_view piece);
  bool hasRoomFor(std::size_t bytes);
  bool refuse(std::string why);
  CURLcode configure(const TransferPolicy& policy);
  std::string causeOf(CURLcode code, const TransferPolicy& policy) const;
  std::string reachedUrl() const;  ///< behind the redirects so far

  OutsideWork* work_ = nullptr;
  std::unique_ptr<curl_slist, Release<&curl_slist_free_all>> headers_;
  std::array<char, CURL_ERROR_SIZE> curlError_{};
  std::string refusal_;    ///< why it was stopped from this side
  bool isSecure_ = false;  ///< has been sent over https:// once, and must not go on in the open
  std::size_t received_ = 0;
  std::size_t headerBytes_ = 0;
  curl_off_t progress_ = 0;
};

/// A text that may hold what a server sent, on one line of 300 bytes at most.
std::string asLine(std::string text);

/// The cause if the file that a download goes into fails.
std::string fileProblem(const std::error_code& error);

/// "60 s", "300 ms".
std::string textOf(std::chrono::milliseconds span);

}  // namespace karvex::foundation
