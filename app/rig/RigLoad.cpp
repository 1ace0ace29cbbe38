#include "app/rig/RigLoad.hpp"

#include <algorithm>
#include <chrono>
#include <system_error>
#include <utility>

#include "app/LoaderHost.hpp"
#include "app/rig/LoadRecorder.hpp"
#include "app/rig/RigSupport.hpp"
#include "device/PortName.hpp"
#include "foundation/run/Timer.hpp"
#include "loader/load.hpp"
#include "loader/load_status.hpp"
#include "loader/programming_worker.hpp"
#include "rig/ExpectedFlash.hpp"
#include "rig/VirtualHid.hpp"

namespace karvex::app {
namespace {

using std::chrono::milliseconds;

constexpr std::uint32_t bootloaderRequestBaud = 134;
constexpr milliseconds tick{250};

/// One load from the request to the end of the watch.
class RigLoad {
 public:
  RigLoad(foundation::Runtime& runtime, rig::VirtualBus& bus, const LoadRequest& request)
      : runtime_(runtime),
        bus_(bus),
        request_(request),
        hid_(bus, runtime.clock()),
        recorder_(loaderHostOn(runtime), hid_.calls(), runtime, timeline_),
        start_(runtime.clock().now()) {
    recorder_.setProgressListener(request.onProgress);
    recorder_.setTextListener(request.beforeText);
    loader::install_host(recorder_.hostCalls());
    loader::install_hid(recorder_.hidCalls());
  }

  LoadOutcome run(const std::function<void(const LoadOutcome&)>& beforeEnd) {
    beforeProcessEnd([this, &beforeEnd] { beforeEnd(outcome()); });
    listenToBoard([this](auto at, const std::string& event) { timeline_.add(at, event); });
    runtime_.mainQueue().post([this] { begin(); });
    runtime_.runMain();
    auto result = outcome();
    beforeProcessEnd(nullptr);
    listenToBoard(nullptr);
    return result;
  }

 private:
  void listenToBoard(rig::VirtualBoard::EventListener listener) {
    bus_.inspect(request_.serialNumber,
                 [&listener](rig::VirtualBoard& board) { board.setEventListener(std::move(listener)); });
  }

  void begin() {
    bus_.setLineSpeed(request_.serialNumber, bootloaderRequestBaud);
    const auto url = "file://" + absolutePath(request_.file);
    answer_ = loader::setParameters(url.c_str(), request_.mcu.c_str());
    timer_ = foundation::Timer::repeating(runtime_.clock(), runtime_.mainQueue(), tick, [this] { watch(); });
    watch();
  }

  /// A path that can't be made absolute is handed on as it stands: the loader says what is wrong with it.
  static std::string absolutePath(const std::filesystem::path& file) {
    std::error_code error;
    const auto absolute = std::filesystem::absolute(file, error);
    return (error ? file : absolute).string();
  }

  void watch() {
    if (recorder_.workerIsRunning()) {
      return;
    }
    const auto status = loader::get_load_status();
    const bool hasFailed = answer_ != loader::load_started ||
                           status == loader::LOAD_STATUS_ERROR_FILE_FORMAT ||
                           status == loader::LOAD_STATUS_ERROR_PROGRAM;
    if (hasFailed) {
      return end();
    }
    if (status != loader::LOAD_STATUS_SUCCESS) {
      return;
    }
    const auto now = runtime_.clock().now();
    if (!succeededAt_) {
      succeededAt_ = now;
    }
    isBack_ = bus_.isPresent(device::interfaceNameFor(request_.serialNumber));
    if (isBack_ || now - *succeededAt_ >= mostTimeToReturn) {
      end();
    }
  }

  void end() {
    timer_.cancel();
    runtime_.stopMain();
  }

  LoadOutcome outcome() {
    LoadOutcome outcome{
        .result = answer_,
        .loadStatus = loader::get_load_status(),
        .bytesRead = recorder_.bytesRead(),
        .failedOpens = recorder_.failedOpens(),
        .blocksToSend = loader::get_load_progress().blocks_to_send,
        .isBack = isBack_,
        .serialNumber = request_.serialNumber,
        .mcu = request_.mcu,
        .boardState = "none",
        .start = start_,
    };
    bus_.inspect(request_.serialNumber, [&](const rig::VirtualBoard& board) {
      const auto expected = rig::expectedFlash(request_.file, board.kind());
      outcome.reports = board.blocksTaken();
      outcome.bootReport = board.hasBooted();
      outcome.flashMatches = expected && std::ranges::equal(*expected, board.flash());
      outcome.mcu = board.kind().mcu;
      outcome.boardState = nameOf(board.state());
    });
    outcome.timeline = timeline_.entries();
    return outcome;
  }

  foundation::Runtime& runtime_;
  rig::VirtualBus& bus_;
  const LoadRequest& request_;
  Timeline timeline_;
  rig::VirtualHid hid_;
  LoadRecorder recorder_;
  foundation::TimePoint start_;
  foundation::Timer timer_;
  std::string answer_;
  std::optional<foundation::TimePoint> succeededAt_;
  bool isBack_ = false;
};

}  // namespace

bool LoadOutcome::isLoaded() const {
  return result == loader::load_started && loadStatus == loader::LOAD_STATUS_SUCCESS && bootReport &&
         flashMatches;
}

LoadOutcome runLoad(foundation::Runtime& runtime, rig::VirtualBus& bus, const LoadRequest& request,
                    const std::function<void(const LoadOutcome&)>& beforeEnd) {
  return RigLoad(runtime, bus, request).run(beforeEnd);
}

}  // namespace karvex::app
