#include "ui/QuitRequest.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace karvex::ui {
namespace {

using enum Leaving;

Snapshot with(upgrade::Alert alert) {
  return {.alert = AlertText{.alert = alert, .title = {}, .message = {}}};
}

const Snapshot idle;
const Snapshot running{.isRunning = true};
const Snapshot reporting{.isReporting = true};
const Snapshot complete = with(upgrade::Alert::procedureComplete);
const Snapshot failed = with(upgrade::Alert::uploadError);

Snapshot completeAndReporting() {
  auto snapshot = complete;
  snapshot.isReporting = true;
  return snapshot;
}

TEST(QuitRequest, IsDueOrDroppedByHowTheRunEnds) {
  const struct {
    const char* what;
    Leaving leaving;
    std::vector<Snapshot> before;
    std::vector<Snapshot> behind;
    bool isDue;
  } cases[] = {
      {"nothing is going", byUser, {idle}, {}, true},
      {"the run ends well", byUser, {running}, {reporting, completeAndReporting(), complete}, true},
      {"and the user has said OK before its report is out",
       byUser,
       {running},
       {completeAndReporting(), reporting, idle},
       true},
      {"a failure without an alert", byUser, {running}, {idle}, false},
      {"the same with the report of a device before it", byUser, {running}, {reporting, idle}, false},
      {"a failure with an alert", byUser, {running}, {failed, idle}, false},
      {"the click on Upload was ahead of it", byUser, {idle}, {running, idle}, false},
      {"a run before ended well, this one fails", byUser, {running, complete, running}, {idle}, false},
      {"the run had failed before, and has been seen", byUser, {running, reporting}, {idle}, true},
      {"an order waits for no eyes", byOrder, {running}, {idle}, true},
      {"nor for an alert", byOrder, {running}, {failed}, true},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.what);
    QuitRequest wish;
    for (const auto& snapshot : one.before) {
      wish.see(snapshot);
    }
    EXPECT_EQ(wish.due(), std::nullopt);
    wish.make(one.leaving);
    EXPECT_EQ(wish.isHeldBack(), isBusy(one.before.back()));
    for (const auto& snapshot : one.behind) {
      wish.see(snapshot);
      EXPECT_EQ(wish.isHeldBack(), isBusy(snapshot));
    }
    EXPECT_EQ(wish.due(), one.isDue ? std::optional(one.leaving) : std::nullopt);
  }
}

TEST(QuitRequest, AnOrderStaysOne) {
  QuitRequest wish;
  wish.see(running);
  wish.make(byUser);
  wish.make(byOrder);
  wish.make(byUser);
  wish.see(idle);
  EXPECT_EQ(wish.due(), byOrder);
}

}  // namespace
}  // namespace karvex::ui
