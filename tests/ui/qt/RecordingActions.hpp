#pragma once

#include <string>
#include <vector>

#include "ui/UserActions.hpp"

namespace karvex::ui::qt {

/// Writes down what the user does.
class RecordingActions final : public UserActions {
 public:
  std::vector<std::string> calls;
  std::vector<std::optional<foundation::Uuid>> selections;
  std::vector<upgrade::Alert> confirmed;

  void appear() override { calls.emplace_back("appear"); }
  void select(std::optional<foundation::Uuid> device) override {
    calls.emplace_back("select");
    selections.push_back(device);
  }
  void upload() override { calls.emplace_back("upload"); }
  void refresh() override { calls.emplace_back("refresh"); }
  void sync() override { calls.emplace_back("sync"); }
  void confirm(upgrade::Alert alert) override {
    calls.emplace_back("confirm");
    confirmed.push_back(alert);
  }
  void sendReport() override { calls.emplace_back("sendReport"); }
  void closeSheet() override { calls.emplace_back("closeSheet"); }
};

}  // namespace karvex::ui::qt
