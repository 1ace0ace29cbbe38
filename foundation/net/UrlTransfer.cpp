#include "foundation/net/UrlTransfer.hpp"

#include <algorithm>
#include <utility>

#include "foundation/net/Url.hpp"
#include "foundation/text/Utf8.hpp"

namespace karvex::foundation {
namespace {

std::string tooLarge(std::size_t limit) {
  constexpr std::size_t mebibyte = 1024 * 1024;
  return "The answer is larger than the limit of " + (limit % mebibyte == 0
                                                          ? std::to_string(limit / mebibyte) + " MiB"
                                                          : std::to_string(limit) + " bytes");
}

/// A method or the name of a header: visible characters only. A line end would smuggle in a header of its
/// own.
bool isWord(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(),
                                      [](char character) { return character > ' ' && character < '\x7f'; });
}

/// What keeps the request from being sent at all. Empty: nothing.
std::string problemOf(const UrlRequest& request) {
  // What stands before an @ may be a password.
  const auto shownUrl = request.url.substr(request.url.rfind('@') + 1);
  if (!isUrl(request.url)) {
    return "Not a valid address: " + shownUrl;
  }
  if (!isWebUrl(request.url)) {
    return "The address doesn't begin with http:// or https://: " + shownUrl;
  }
  const bool isSound = isWord(request.method) &&
                       std::all_of(request.headers.begin(), request.headers.end(), [](const auto& header) {
                         return isWord(header.first) && header.second.find_first_of(std::string_view(
                                                            "\r\n\0", 3)) == std::string::npos;
                       });
  return isSound ? "" : "The request's method or one of its headers has characters that it can't have";
}

/// Null if memory runs out.
curl_slist* headerLines(const UrlRequest& request) {
  // Without the empty one, a large body would wait a second for the server's leave to come.
  auto* lines = curl_slist_append(nullptr, "Expect:");
  for (const auto& [name, value] : request.headers) {
    lines = curl_slist_append(lines, (value.empty() ? name + ";" : name + ": " + value).c_str());
  }
  return lines;
}

/// Sets options until one is refused.
class Options {
 public:
  explicit Options(CURL* easy) : easy_(easy) {}
  template <typename Value>
  void set(CURLoption option, Value value) {
    code_ = code_ == CURLE_OK ? curl_easy_setopt(easy_, option, value) : code_;
  }
  CURLcode code() const { return code_; }

 private:
  CURL* easy_;
  CURLcode code_ = CURLE_OK;
};

void setRequest(Options& options, const UrlRequest& request) {
  const bool isHead = request.method == "HEAD";
  const bool isPost = request.method == "POST";
  const bool isPlainGet = request.method == "GET" && request.body.empty();
  options.set(CURLOPT_URL, request.url.c_str());
  if (isHead) {
    options.set(CURLOPT_NOBODY, 1L);
  } else if (!isPlainGet) {
    options.set(CURLOPT_POST, 1L);
    options.set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
    options.set(CURLOPT_POSTFIELDS, request.body.data());
  }
  // A redirected POST becomes a GET, as in browsers, only if its method isn't spelled out.
  if (!isHead && !isPost && !isPlainGet) {
    options.set(CURLOPT_CUSTOMREQUEST, request.method.c_str());
  }
}

/// How the program talks to the network; the numbers are the policy's.
void setPolicy(Options& options, const TransferPolicy& policy, std::size_t largest) {
  options.set(CURLOPT_PROTOCOLS_STR, "http,https");
  options.set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
  options.set(CURLOPT_FOLLOWLOCATION, 1L);
  options.set(CURLOPT_MAXREDIRS, policy.mostRedirects);
  // One transfer at a time on a connection, so that its port can be the transfer's name.
  options.set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  options.set(CURLOPT_USERAGENT, "Karvex");
  options.set(CURLOPT_SSL_VERIFYPEER, 1L);
  options.set(CURLOPT_SSL_VERIFYHOST, 2L);
  options.set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  if (policy.certificateAuthorities) {
    options.set(CURLOPT_CAINFO, policy.certificateAuthorities->c_str());
    options.set(CURLOPT_CAPATH, static_cast<const char*>(nullptr));
  }
  if (!policy.usesProxy) {
    options.set(CURLOPT_PROXY, "");  // Not null, which would let the environment decide.
  }
  options.set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(policy.connectTimeOut.count()));
  options.set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(largest));
  options.set(CURLOPT_NOSIGNAL, 1L);
  // A name server that doesn't answer must hold up neither the other transfers nor the session's end.
  options.set(CURLOPT_QUICK_EXIT, 1L);
}

}  // namespace

std::string asLine(std::string text) {
  constexpr std::size_t longest = 300;
  constexpr std::string_view more = "...";
  const auto isControl = [](char character) { return static_cast<unsigned char>(character) < ' '; };
  std::replace_if(text.begin(), text.end(), isControl, ' ');
  if (text.size() > longest) {
    text.resize(beginningOf(text, longest - more.size()).size());
    text += more;
  }
  return text;
}

std::string fileProblem(const std::error_code& error) {
  return "The temporary file can't be written: " + error.message();
}

std::string textOf(std::chrono::milliseconds span) {
  constexpr auto second = std::chrono::milliseconds(1000);
  return span % second == span.zero() ? std::to_string(span / second) + " s"
                                      : std::to_string(span.count()) + " ms";
}

std::string UrlTransfer::open(const TransferPolicy& policy, OutsideWork& work) {
  if (auto problem = problemOf(request); !problem.empty()) {
    return problem;
  }
  work_ = &work;
  easy.reset(curl_easy_init());
  headers_.reset(headerLines(request));
  const auto code = easy && headers_ ? configure(policy) : CURLE_OUT_OF_MEMORY;
  return code == CURLE_OK ? "" : causeOf(code, policy);
}

CURLcode UrlTransfer::configure(const TransferPolicy& policy) {
  Options options(easy.get());
  setRequest(options, request);
  setPolicy(options, policy, largest);
  options.set(CURLOPT_HTTPHEADER, headers_.get());
  options.set(CURLOPT_ERRORBUFFER, curlError_.data());
  options.set(CURLOPT_WRITEFUNCTION, &onBody);
  options.set(CURLOPT_WRITEDATA, static_cast<void*>(this));
  options.set(CURLOPT_HEADERFUNCTION, &onHeader);
  options.set(CURLOPT_HEADERDATA, static_cast<void*>(this));
  options.set(CURLOPT_NOPROGRESS, 0L);
  options.set(CURLOPT_XFERINFOFUNCTION, &onProgress);
  options.set(CURLOPT_XFERINFODATA, static_cast<void*>(this));
  options.set(CURLOPT_PREREQFUNCTION, &onConnected);
  options.set(CURLOPT_PREREQDATA, static_cast<void*>(this));
  return options.code();
}

std::string UrlTransfer::close(CURLcode code, const TransferPolicy& policy) {
  if (code != CURLE_OK) {
    return causeOf(code, policy);
  }
  curl_easy_getinfo(easy.get(), CURLINFO_RESPONSE_CODE, &response.status);
  response.url = withoutCredentials(reachedUrl());
  if (file) {
    path = file->path();
    if (const auto problem = file->keep()) {
      return fileProblem(problem);
    }
  }
  return {};
}

std::string UrlTransfer::causeOf(CURLcode code, const TransferPolicy& policy) const {
  if (!refusal_.empty()) {
    return refusal_;
  }
  std::string text = curlError_.front() != '\0' ? curlError_.data() : curl_easy_strerror(code);
  switch (code) {
    case CURLE_FILESIZE_EXCEEDED:
      return tooLarge(largest);
    case CURLE_TOO_MANY_REDIRECTS:
      return "The server redirects more than " + std::to_string(policy.mostRedirects) + " times";
    case CURLE_UNSUPPORTED_PROTOCOL:  // Of an answer that isn't HTTP, too.
      if (isSecure_ && !isSecureUrl(reachedUrl())) {
        return "The server redirects to an address that doesn't begin with https://";
      }
      return isWebUrl(reachedUrl())
                 ? text
                 : "The server redirects to an address that is neither http:// nor https://";
    case CURLE_SSL_CONNECT_ERROR:
      return "No secure connection: " + text;
    case CURLE_PEER_FAILED_VERIFICATION:
      return "The server's certificate is refused: " + text;
    default:
      return text;
  }
}

std::string UrlTransfer::failureText(const std::string& cause) const {
  auto host = hostOf(reachedUrl());
  if (host.empty()) {
    host = hostOf(request.url);
  }
  return asLine(host.empty() ? cause : host + ": " + cause);
}

std::string UrlTransfer::reachedUrl() const {
  const char* url = nullptr;
  if (easy) {
    curl_easy_getinfo(easy.get(), CURLINFO_EFFECTIVE_URL, &url);
  }
  return url != nullptr ? url : request.url;
}

std::size_t UrlTransfer::onBody(char* data, std::size_t, std::size_t size, void* self) {
  auto& transfer = *static_cast<UrlTransfer*>(self);
  transfer.hasMoved = true;
  return transfer.take({data, size}) ? size : CURL_WRITEFUNC_ERROR;
}

/// Trailers come here too, and a server may send any number of them.
std::size_t UrlTransfer::onHeader(char*, std::size_t, std::size_t size, void* self) {
  auto& transfer = *static_cast<UrlTransfer*>(self);
  transfer.hasMoved = true;
  transfer.headerBytes_ += size;
  return transfer.hasRoomFor(transfer.headerBytes_) ? size : CURL_WRITEFUNC_ERROR;
}

int UrlTransfer::onProgress(void* self, curl_off_t, curl_off_t downloaded, curl_off_t, curl_off_t uploaded) {
  auto& transfer = *static_cast<UrlTransfer*>(self);
  const auto progress = downloaded + uploaded;
  transfer.hasMoved |= std::exchange(transfer.progress_, progress) != progress;
  // The body of a redirect is counted here and nowhere else.
  return transfer.hasRoomFor(static_cast<std::size_t>(downloaded)) ? 0 : 1;
}

int UrlTransfer::onConnected(void* self, char*, char*, int, int localPort) {
  auto& transfer = *static_cast<UrlTransfer*>(self);
  transfer.hasMoved = true;
  transfer.work_->setName(transfer.ticket, static_cast<std::uint64_t>(localPort));
  return transfer.staySecure() ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
}

/// Before each request, so that a redirect is judged by the one before it and not by the first alone.
bool UrlTransfer::staySecure() {
  isSecure_ |= isSecureUrl(reachedUrl());
  return !isSecure_ || curl_easy_setopt(easy.get(), CURLOPT_REDIR_PROTOCOLS_STR, "https") == CURLE_OK;
}

bool UrlTransfer::take(std::string_view piece) {
  received_ += piece.size();
  if (!hasRoomFor(received_)) {
    return false;
  }
  if (!file) {
    response.body += piece;
    return true;
  }
  const auto problem = file->write(piece);
  return !problem || refuse(fileProblem(problem));
}

bool UrlTransfer::hasRoomFor(std::size_t bytes) {
  return bytes <= largest || refuse(tooLarge(largest));
}

bool UrlTransfer::refuse(std::string why) {
  refusal_ = std::move(why);
  return false;
}

}  // namespace karvex::foundation
