#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "app/rig/RigPlatform.hpp"
#include "foundation/Log.hpp"
#include "foundation/run/VirtualRuntime.hpp"
#include "loader/load_status.hpp"
#include "ui/Actions.hpp"
#include "ui/ContentView.hpp"
#include "ui/KarvexApp.hpp"

namespace karvex::ui {

/// The window without a toolkit, on a rig of boards in virtual time, with the log channels caught.
class UiFixture : public testing::Test {
 protected:
  UiFixture() {
    loader::set_load_status(loader::LOAD_STATUS_IDLE);
    foundation::log::redirectSystem([](std::string_view) {});
    foundation::log::redirectPrint([](std::string_view) {});
    foundation::log::redirectDebug([this](std::string_view text) { debugged.emplace_back(text); });
  }
  ~UiFixture() override {
    foundation::log::redirectSystem(nullptr);
    foundation::log::redirectPrint(nullptr);
    foundation::log::redirectDebug(nullptr);
    loader::set_load_status(loader::LOAD_STATUS_IDLE);
  }

  void runFor(foundation::Duration span) {
    runtime.mainQueue().postAt(runtime.clock().now() + span, [this] { runtime.stopMain(); });
    runtime.runMain();
  }

  void misbehave(const std::string& fault) {
    rig::ServiceFaults faults;
    ASSERT_EQ(rig::addServiceFault(fault, faults), std::nullopt);
    rig.service.setFaults(faults);
  }

  std::size_t requestsTo(const std::string& path) const {
    std::size_t count = 0;
    for (const auto& request : rig.service.requests()) {
      count += request.path == path ? 1U : 0U;
    }
    return count;
  }

  std::vector<records::BootableDevice> rows() const {
    return view.deviceListView.deviceManager.managedDevices.get();
  }

  foundation::VirtualRuntime runtime;
  app::EquipmentPlan plan{.boards = 2};
  app::RigPlatform rig{runtime, plan, {}};
  KarvexApp application{rig.platform()};
  ContentView view{rig.platform(), application};
  Actions actions{runtime.mainQueue(), view};
  std::vector<std::string> debugged;
};

}  // namespace karvex::ui
