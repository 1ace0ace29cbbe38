#include "foundation/net/UrlSession.hpp"

#include <curl/curl.h>
#include <pthread.h>
#include <signal.h>

#include <algorithm>
#include <chrono>
#include <future>
#include <map>
#include <mutex>
#include <new>
#include <optional>
#include <thread>

#include "foundation/files/TemporaryDirectory.hpp"
#include "foundation/net/UrlTransfer.hpp"

namespace karvex::foundation {
namespace {

constexpr auto cancelled = "The transfer was cancelled";

void initialiseCurl() {
  static const auto code = curl_global_init(CURL_GLOBAL_DEFAULT);
  if (code != CURLE_OK) {
    throw UrlError(curl_easy_strerror(code));
  }
}

/// Writing to a connection that the server has ended may raise this signal, which would end the program. With
/// CURLOPT_NOSIGNAL, libcurl leaves it to its user.
void blockBrokenPipeSignal() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

}  // namespace

std::string UrlResponse::description() const {
  return asLine(url + " answered " + std::to_string(status));
}

/// All transfers of a session, and the thread that runs them.
class UrlSession::Transfers : public std::enable_shared_from_this<Transfers> {
 public:
  using Shared = std::shared_ptr<UrlTransfer>;

  Transfers(Runtime& runtime, TransferPolicy policy);

  /// The session may go while these wait. Any thread.
  static Task<UrlResponse> send(std::shared_ptr<Transfers> self, UrlRequest request);
  static Task<std::filesystem::path> download(std::shared_ptr<Transfers> self, std::string url);

  /// Fails what is under way, and whatever comes after. Once, on any thread but the transfers' own.
  void stop();

 private:
  /// Suspends the coroutine for as long as the transfer lasts.
  struct Arrival {
    const std::shared_ptr<Transfers>& transfers;
    const Shared& transfer;
    bool await_ready() const noexcept { return false; }
    template <typename Promise>
    void await_suspend(std::coroutine_handle<Promise> handle) const {
      // All that the coroutine holds dies with it, and it may go on before start() returns.
      const auto to = transfers;
      const auto started = transfer;
      to->start(started, detail::resumeJob(handle.promise()));
    }
    void await_resume() const {
      if (!transfer->error.empty()) {
        throw UrlError(transfer->error);
      }
    }
  };

  struct IdleCheck {
    Shared transfer;
    std::promise<void> isDone;
  };

  /// What other threads want of the transfers' own.
  struct Orders {
    std::vector<Shared> starts;
    std::vector<IdleCheck> idleChecks;
  };

  // Any thread.
  void start(const Shared& transfer, Job resume);
  void postIdleCheck(const Shared& transfer);
  void awaitIdleCheck(const Shared& transfer);
  void resume(UrlTransfer& transfer);

  // The transfers' own thread.
  void work();
  bool awaitOrders(Orders& orders);
  void open(const Shared& transfer);
  std::filesystem::path newFile();
  void moveBytes();
  void checkIdle(const Shared& transfer);
  void conclude(Shared transfer, const std::string& cause);

  Runtime& runtime_;
  const TransferPolicy policy_;
  std::unique_ptr<CURLM, Release<&curl_multi_cleanup>> multi_;
  std::map<CURL*, Shared> active_;
  std::optional<TemporaryDirectory> directory_;
  int lastFile_ = 0;
  std::mutex mutex_;
  Orders orders_;          ///< under the mutex
  bool isEnding_ = false;  ///< under the mutex
  std::thread thread_;
};

UrlSession::Transfers::Transfers(Runtime& runtime, TransferPolicy policy)
    : runtime_(runtime), policy_(std::move(policy)) {
  initialiseCurl();
  multi_.reset(curl_multi_init());
  if (!multi_) {
    throw std::bad_alloc();
  }
  thread_ = std::thread([this] { work(); });
}

Task<UrlResponse> UrlSession::Transfers::send(std::shared_ptr<Transfers> self, UrlRequest request) {
  const auto transfer = std::make_shared<UrlTransfer>(std::move(request), self->policy_.largestAnswer);
  const Arrival arrival{self, transfer};
  co_await arrival;
  co_return std::move(transfer->response);
}

Task<std::filesystem::path> UrlSession::Transfers::download(std::shared_ptr<Transfers> self,
                                                            std::string url) {
  UrlRequest request;
  request.url = std::move(url);
  const auto transfer = std::make_shared<UrlTransfer>(std::move(request), self->policy_.largestDownload);
  transfer->isDownload = true;
  const Arrival arrival{self, transfer};
  co_await arrival;
  co_return std::move(transfer->path);
}

void UrlSession::Transfers::stop() {
  {
    const std::lock_guard lock(mutex_);
    isEnding_ = true;
    curl_multi_wakeup(multi_.get());
  }
  thread_.join();
  directory_.reset();
}

void UrlSession::Transfers::start(const Shared& transfer, Job resumeCoroutine) {
  transfer->resume = std::move(resumeCoroutine);
  transfer->ticket = runtime_.outsideWork().begin();
  transfer->begin = transfer->lastMove = runtime_.clock().now();
  postIdleCheck(transfer);
  {
    const std::lock_guard lock(mutex_);
    if (!isEnding_) {
      orders_.starts.push_back(transfer);
      curl_multi_wakeup(multi_.get());
      return;
    }
  }
  transfer->error = transfer->failureText(cancelled);
  resume(*transfer);
}

void UrlSession::Transfers::postIdleCheck(const Shared& transfer) {
  const std::weak_ptr<Transfers> weakSelf = weak_from_this();
  const std::weak_ptr<UrlTransfer> weakTransfer = transfer;
  const auto due =
      std::min(transfer->lastMove + policy_.idleTimeOut, transfer->begin + policy_.longestTransfer);
  runtime_.globalQueue().postAt(due, [weakSelf, weakTransfer] {
    const auto self = weakSelf.lock();
    const auto checked = weakTransfer.lock();
    if (self && checked) {
      self->awaitIdleCheck(checked);
    }
  });
}

/// Blocks the global job until the check is through. While the job runs, a virtual clock stands still:
/// nothing can overtake bytes that have come but haven't been read.
void UrlSession::Transfers::awaitIdleCheck(const Shared& transfer) {
  std::future<void> done;
  {
    const std::lock_guard lock(mutex_);
    if (isEnding_) {
      return;
    }
    IdleCheck check{transfer, {}};
    done = check.isDone.get_future();
    orders_.idleChecks.push_back(std::move(check));
    curl_multi_wakeup(multi_.get());
  }
  done.wait();
}

void UrlSession::Transfers::resume(UrlTransfer& transfer) {
  runtime_.globalQueue().post(std::exchange(transfer.resume, nullptr));
  runtime_.outsideWork().end(transfer.ticket);
}

void UrlSession::Transfers::work() {
  blockBrokenPipeSignal();
  Orders orders;
  while (awaitOrders(orders)) {
    for (const auto& transfer : orders.starts) {
      open(transfer);
    }
    moveBytes();
    for (auto& check : orders.idleChecks) {
      checkIdle(check.transfer);
      check.isDone.set_value();
    }
    orders = {};
  }
  while (!active_.empty()) {
    conclude(active_.begin()->second, cancelled);
  }
  for (const auto& transfer : orders.starts) {
    conclude(transfer, cancelled);
  }
  for (auto& check : orders.idleChecks) {
    check.isDone.set_value();
  }
  multi_.reset();  // Says good-bye on the connections that are still open.
}

/// Waits until there is something to do. False if that is to end.
bool UrlSession::Transfers::awaitOrders(Orders& orders) {
  // Orders wake it, and libcurl's own deadlines come sooner.
  constexpr std::chrono::milliseconds longest = std::chrono::minutes(10);
  curl_multi_poll(multi_.get(), nullptr, 0, static_cast<int>(longest.count()), nullptr);
  const std::lock_guard lock(mutex_);
  std::swap(orders, orders_);
  return !isEnding_;
}

void UrlSession::Transfers::open(const Shared& transfer) {
  auto problem = transfer->open(policy_, runtime_.outsideWork());
  try {
    if (problem.empty() && transfer->isDownload) {
      transfer->file.emplace(newFile());
    }
  } catch (const std::system_error& error) {
    problem = fileProblem(error.code());
  }
  if (problem.empty()) {
    const auto code = curl_multi_add_handle(multi_.get(), transfer->easy.get());
    problem = code == CURLM_OK ? "" : curl_multi_strerror(code);
  }
  if (!problem.empty()) {
    return conclude(transfer, problem);
  }
  active_.emplace(transfer->easy.get(), transfer);
}

std::filesystem::path UrlSession::Transfers::newFile() {
  if (!directory_) {
    directory_.emplace();
  }
  return directory_->path() / std::to_string(++lastFile_);
}

void UrlSession::Transfers::moveBytes() {
  // Whatever moves has moved by now: the far side may answer what is sent here, and let virtual time go on,
  // before the callbacks tell of it.
  const auto now = runtime_.clock().now();
  int stillRunning = 0;
  curl_multi_perform(multi_.get(), &stillRunning);
  for (const auto& [easy, transfer] : active_) {
    if (std::exchange(transfer->hasMoved, false)) {
      transfer->lastMove = now;
    }
  }
  int stillQueued = 0;
  while (const auto* message = curl_multi_info_read(multi_.get(), &stillQueued)) {
    if (message->msg == CURLMSG_DONE) {
      const auto transfer = active_.at(message->easy_handle);
      conclude(transfer, transfer->close(message->data.result, policy_));
    }
  }
}

void UrlSession::Transfers::checkIdle(const Shared& transfer) {
  if (!active_.contains(transfer->easy.get())) {
    return;
  }
  const auto now = runtime_.clock().now();
  const bool isTooLong = now - transfer->begin >= policy_.longestTransfer;
  if (!isTooLong && now - transfer->lastMove < policy_.idleTimeOut) {
    postIdleCheck(transfer);
    return;
  }
  runtime_.outsideWork().resumeTicket(transfer->ticket);
  conclude(transfer, isTooLong ? "It was not through after " + textOf(policy_.longestTransfer)
                               : "Nothing came for " + textOf(policy_.idleTimeOut));
}

/// Ends a transfer and lets its coroutine go on; an empty cause is a success. Holds the transfer by itself,
/// since its place in the list goes on the way.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
void UrlSession::Transfers::conclude(Shared transfer, const std::string& cause) {
  if (!cause.empty()) {
    transfer->error = transfer->failureText(cause);
  }
  transfer->file.reset();
  if (auto* easy = transfer->easy.get()) {
    curl_multi_remove_handle(multi_.get(), easy);
    active_.erase(easy);
    transfer->easy.reset();
  }
  resume(*transfer);
}

UrlSession::UrlSession(Runtime& runtime, TransferPolicy policy)
    : transfers_(std::make_shared<Transfers>(runtime, std::move(policy))) {}

UrlSession::~UrlSession() {
  transfers_->stop();
}

Task<UrlResponse> UrlSession::send(UrlRequest request) {
  return Transfers::send(transfers_, std::move(request));
}

Task<std::filesystem::path> UrlSession::download(std::string url) {
  return Transfers::download(transfers_, std::move(url));
}

}  // namespace karvex::foundation
