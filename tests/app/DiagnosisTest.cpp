#include "app/diagnosis/Diagnosis.hpp"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "app/diagnosis/ServiceSurvey.hpp"
#include "app/diagnosis/SystemSurvey.hpp"
#include "foundation/files/TemporaryDirectory.hpp"
#include "tests/ExpectedText.hpp"
#include "tests/ui/UiFixture.hpp"

namespace karvex::app {
namespace {

namespace fs = std::filesystem;
using Result = CheckStep::Result;
using testing::ElementsAre;
using testing::HasSubstr;

void write(const fs::path& file, std::string_view text) {
  fs::create_directories(file.parent_path());
  std::ofstream(file) << text;
}

Diagnosis allIsWell() {
  return {.time = "2026-11-23 22:44:41 UTC",
          .program = "karvex-console 1.0.0",
          .system = {.system = "Debian GNU/Linux 12 (bookworm), Linux 6.1.0-28-amd64 x86_64",
                     .rulesFile = "/usr/lib/udev/rules.d/60-karvex.rules",
                     .udevdRuns = true,
                     .midiNode = "/dev/snd/seq"},
          .service = {.address = "https://firmware.example.com/services/loaderInfo.php",
                      .steps = {{"name", Result::well, "192.0.2.7"},
                                {"connection", Result::well, ""},
                                {"TLS", Result::well, ""},
                                {"list", Result::well, "3 devices"}}},
          .boards = {{.place = "1-1.2",
                      .device = {0x16C0, 0x0483, 0x0280, "1000010", "Rhythm Box"},
                      .nodes = {{.path = "/dev/ttyACM0", .isTagged = true}, {.path = "/dev/snd/midiC1D0"}},
                      .isKeptFromModemManagers = true,
                      .isKeptFromMtpProbes = true}}};
}

Diagnosis nothingIsWell() {
  auto diagnosis = allIsWell();
  diagnosis.system.isRoot = true;
  diagnosis.system.rulesFile.clear();
  diagnosis.system.udevdRuns = false;
  diagnosis.system.interferingPrograms = {"ModemManager (process 812)"};
  diagnosis.system.midiObstacle = "No such file or directory";
  diagnosis.service.usesProxy = true;
  diagnosis.service.steps = {{"name", Result::notTried, ""},
                             {"TLS", Result::failed, "certificate\x1b[2J expired"}};
  diagnosis.boards[0].nodes[0] = {.path = "/dev/ttyACM0",
                                  .obstacle = "Permission denied: it belongs to root:dialout, mode 660",
                                  .holders = "minicom (process 4711)",
                                  .isTagged = false};
  diagnosis.boards[0].isKeptFromModemManagers = false;
  diagnosis.boards[0].isKeptFromMtpProbes.reset();
  diagnosis.boards.push_back({.place = "1-2",
                              .device = {0x16C0, 0x0478, 0x0100, "1000020", ""},
                              .nodes = {{.path = "/dev/hidraw0", .isTagged = false}}});
  diagnosis.boards.push_back({.place = "1-3", .device = {0x16C0, 0x05DC, 0x0100, "", "USBasp"}});
  diagnosis.boards.push_back({.place = "1-4", .device = {0x16C0, 0x0483, 0x0280, "", "Two\nlines"}});
  diagnosis.failures = {"2026-11-22 10:00:00 UTC Device Port currently in use! : One or more"};
  return diagnosis;
}

TEST(DiagnosisTest, TheReportInAFormToPaste) {
  auto off = allIsWell();
  off.system.rulesAreOff = true;
  off.boards.clear();
  auto late = allIsWell();
  late.boards[0].nodes[0].isTagged = false;
  const auto text = "=== all is well\n" + textOf(allIsWell()) + "=== nothing is well\n" +
                    textOf(nothingIsWell()) + "=== rules turned off, and no board\n" + textOf(off) +
                    "=== rules that came after the board\n" + textOf(late);
  expectText(KARVEX_REPORTS "/diagnosis.txt", text);
}

TEST(SystemSurveyTest, FindsTheRulesAndTheProgramsThatMeddle) {
  const foundation::TemporaryDirectory directory;
  const auto& root = directory.path();
  EXPECT_EQ(surveySystem(root).rulesFile, "");
  write(root / "etc/os-release", "ID=x\nPRETTY_NAME=\"Some System 1\"\n");
  write(root / "usr/lib/udev/rules.d/68-karvex.rules", "# rules\n");
  write(root / "run/udev/control", "");
  write(root / "dev/snd/seq", "");
  write(root / "proc/812/comm", "ModemManager\n");
  write(root / "proc/813/comm", "bash\n");
  write(root / "proc/tty/comm", "brltty\n");
  auto system = surveySystem(root);
  EXPECT_THAT(system.system, testing::StartsWith("Some System 1, Linux "));
  EXPECT_EQ(system.rulesFile, root / "usr/lib/udev/rules.d/68-karvex.rules");
  EXPECT_FALSE(system.rulesAreOff);
  EXPECT_TRUE(system.udevdRuns);
  EXPECT_THAT(system.interferingPrograms, ElementsAre("ModemManager (process 812)"));
  EXPECT_EQ(system.midiObstacle, "");
  fs::create_directories(root / "etc/udev/rules.d");
  fs::create_symlink("/dev/null", root / "etc/udev/rules.d/60-karvex.rules");
  system = surveySystem(root);
  EXPECT_EQ(system.rulesFile, root / "etc/udev/rules.d/60-karvex.rules") << "/etc goes first";
  EXPECT_TRUE(system.rulesAreOff);
}

class ServiceSurveyTest : public ui::UiFixture {
 protected:
  ServiceDiagnosis survey(service::ServiceAddress address) {
    ServiceDiagnosis result;
    const auto ask = [&]() -> foundation::Task<> {
      result = co_await surveyService(runtime, rig.urlSession, address);
      co_await foundation::resumeOn(runtime.mainQueue());
      runtime.stopMain();
    };
    foundation::spawn(runtime.mainQueue(), ask());
    runtime.runMain();
    return result;
  }
};

TEST_F(ServiceSurveyTest, NamesTheFirstStepThatFails) {
  const auto real = service::ServiceAddress::at(rig.service.baseAddress());
  using enum CheckStep::Result;
  const struct {
    const char* description;
    const char* fault;
    service::ServiceAddress address;
    std::vector<Result> results;
    const char* detail;  ///< of the last step that was tried
  } cases[] = {
      {"no such name",
       nullptr,
       service::ServiceAddress::at("https://no-such-host.invalid"),
       {failed, notTried, notTried, notTried},
       ""},
      {"nobody listens",
       nullptr,
       service::ServiceAddress::at("https://127.0.0.1:1"),
       {well, failed, notTried, notTried},
       "Connection refused"},
      {"well", nullptr, real, {well, well, well, well}, "2 devices"},
      {"bad list", "missing-key=mcu", real, {well, well, well, failed}, ""},
      {"bad certificate", "wrong-certificate", real, {well, well, failed, notTried}, ""},
  };
  for (const auto& example : cases) {
    SCOPED_TRACE(example.description);
    if (example.fault != nullptr) {
      misbehave(example.fault);
    }
    const auto found = survey(example.address);
    std::vector<Result> results;
    std::string detail;
    for (const auto& step : found.steps) {
      results.push_back(step.result);
      detail = step.result == notTried ? detail : step.detail;
    }
    EXPECT_EQ(results, example.results);
    EXPECT_THAT(detail, HasSubstr(example.detail));
  }
}

}  // namespace
}  // namespace karvex::app
