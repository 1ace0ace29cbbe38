#include "app/rig/RunReport.hpp"

#include <chrono>
#include <nlohmann/json.hpp>
#include <string_view>

#include "upgrade/LoadProgress.hpp"

namespace karvex::app {
namespace {

using Json = nlohmann::ordered_json;

class Times {
 public:
  explicit Times(foundation::TimePoint start) : start_(start) {}
  double operator()(foundation::TimePoint at) const {
    return std::chrono::duration<double, std::milli>(at - start_).count();
  }

 private:
  foundation::TimePoint start_;
};

Json rowsOf(const RunRecord& record, const Times& ms) {
  auto rows = Json::array();
  for (const auto& [serialNumber, statuses] : record.statuses) {
    auto history = Json::array();
    for (const auto& entry : statuses) {
      history.push_back(
          {{"at_ms", ms(entry.at)}, {"status", entry.status}, {"text", upgrade::statusText(entry.status)}});
    }
    rows.push_back({{"serial", serialNumber}, {"statuses", history}});
  }
  return rows;
}

Json boardsOf(const RunRecord& record, const Times& ms) {
  auto boards = Json::array();
  for (const auto& board : record.boards) {
    auto timeline = Json::array();
    for (const auto& entry : board.timeline) {
      timeline.push_back({{"at_ms", ms(entry.at)}, {"event", entry.event}});
    }
    boards.push_back({{"serial", board.serialNumber},
                      {"mcu", board.mcu},
                      {"state", board.state},
                      {"reports", board.reports},
                      {"boot_report", board.bootReport},
                      {"flash_matches", board.flashMatches},
                      {"reported", board.isReported},
                      {"timeline", timeline}});
  }
  return boards;
}

Json dialogsOf(const RunRecord& record, const Times& ms) {
  auto dialogs = Json::array();
  for (const auto& dialog : record.dialogs) {
    dialogs.push_back({{"at_ms", ms(dialog.at)}, {"title", dialog.title}, {"message", dialog.message}});
  }
  return dialogs;
}

Json controlsOf(const RunRecord& record, const Times& ms) {
  auto controls = Json::array();
  for (const auto& entry : record.controls) {
    controls.push_back({{"at_ms", ms(entry.at)},
                        {"isUploadButtonDisabled", entry.uploadDisabled},
                        {"loadingInProgress", entry.loading},
                        {"actionButtonsDisabled", entry.actionsDisabled}});
  }
  return controls;
}

Json requestsOf(const RunRecord& record, const Times& ms) {
  auto requests = Json::array();
  for (const auto& request : record.requests) {
    requests.push_back({{"at_ms", ms(request.time)},
                        {"method", request.method},
                        {"path", request.path},
                        {"body", request.body}});
  }
  return requests;
}

}  // namespace

std::string jsonOf(const RunRecord& record) {
  const Times ms(record.start);
  const Json document = {{"rows", rowsOf(record, ms)},
                         {"dialogs", dialogsOf(record, ms)},
                         {"controls", controlsOf(record, ms)},
                         {"requests", requestsOf(record, ms)},
                         {"boards", boardsOf(record, ms)}};
  return document.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

}  // namespace karvex::app
