#include "MIDIKitIO/platform/linux/ThruConnectionFile.hpp"

#include <gmock/gmock.h>
#include <unistd.h>

#include <fstream>

#include "MIDIKitIO/platform/engine/ThruParameters.hpp"
#include "MIDIKitIO/platform/linux/AlsaMIDIService.hpp"
#include "foundation/Log.hpp"
#include "foundation/run/VirtualRuntime.hpp"

namespace midikit::io::alsa {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

engine::ThruConnectionStore::Stored connection(const std::string& owner, std::int32_t id) {
  auto parameters = engine::usualThruParameters();
  parameters.numSources = 1;
  parameters.sources.front().uniqueID = id;
  return {owner, parameters};
}

std::vector<std::string> ownersIn(std::string_view text) {
  std::vector<std::string> owners;
  for (const auto& stored : thruConnectionsIn(text)) {
    owners.push_back(stored.owner + ':' + std::to_string(stored.parameters.sources.front().uniqueID));
  }
  return owners;
}

class ThruConnectionFileTest : public testing::Test {
 protected:
  ~ThruConnectionFileTest() override {
    fs::permissions(root_, fs::perms::owner_all, failure_);
    fs::remove_all(root_, failure_);
  }
  std::error_code failure_;
  fs::path root_ = testing::TempDir() + "thru-file-" + std::to_string(::getpid());
  fs::path file_ = root_ / "deep" / "thru-connections";
};

TEST_F(ThruConnectionFileTest, ConnectionsComeBackInTheirOrder) {
  auto store = openThruConnectionStore(file_);
  const auto gone = store->add("one\n", connection("", 1).parameters);
  store->add("two", connection("", -2).parameters);
  store->add("", connection("", 3).parameters);
  store->remove(gone);
  store = openThruConnectionStore(file_);
  ASSERT_EQ(store->all().size(), 2U);
  EXPECT_EQ(store->all()[0].parameters.sources.front().uniqueID, -2);
  EXPECT_EQ(store->ownedBy("two").size(), 1U);
  EXPECT_EQ(store->ownedBy("").size(), 1U);
  EXPECT_EQ(std::distance(fs::directory_iterator(file_.parent_path()), fs::directory_iterator()), 2)
      << "no other file is left but the lock";
}

TEST_F(ThruConnectionFileTest, WhatIsNoConnectionIsLeftOut) {
  const auto good = textOfThruConnections({connection("owner", 5)});
  const auto line = good.substr(good.find('\n') + 1);
  const auto head = good.substr(0, good.find('\n') + 1);
  auto tooManyEndpoints = connection("owner", 5);
  tooManyEndpoints.parameters.numSources = 1000;
  const auto none = std::vector<std::string>();
  const std::vector<std::string> once = {"owner:5"};
  const std::vector<std::tuple<const char*, std::string, std::vector<std::string>>> table = {
      {"empty", "", none},
      {"another format", "thru connections 2\n" + line, none},
      {"no line end", good.substr(0, good.size() - 1), once},
      {"half a record, and a good one", head + line.substr(0, 100) + '\n' + line, once},
      {"no digits", head + "zz " + line + line, once},
      {"half a digit pair", head + "a" + line + line, once},
      {"counts beyond the record", textOfThruConnections({tooManyEndpoints}), none},
      {"an owner without end", head + std::string(5000, 'a') + line + line, once},
      {"only rubbish", std::string(100'000, '\xFF'), none},
  };
  for (const auto& [description, text, owners] : table) {
    EXPECT_EQ(ownersIn(text), owners) << description;
  }
  std::string many = head;
  for (std::size_t count = 0; count < mostStoredConnections + 10; ++count) {
    many += line;
  }
  EXPECT_EQ(thruConnectionsIn(many).size(), mostStoredConnections);
}

TEST_F(ThruConnectionFileTest, AFileThatCannotBeWrittenIsToldOf) {
  std::string told;
  karvex::foundation::log::redirectDebug([&](std::string_view line) { told += line; });
  fs::create_directories(file_);  // A directory stands where the file should.
  const auto store = openThruConnectionStore(file_);
  store->add("owner", connection("", 1).parameters);
  karvex::foundation::log::redirectDebug(nullptr);
  EXPECT_EQ(store->all().size(), 1U);
  EXPECT_THAT(told, HasSubstr("MIDI thru connections are not kept"));
}

TEST_F(ThruConnectionFileTest, StandsWhereTheUserKeepsState) {
  EXPECT_EQ(thruConnectionFile("/state", "/home/me"), "/state/karvex/thru-connections");
  EXPECT_EQ(thruConnectionFile(nullptr, "/home/me"), "/home/me/.local/state/karvex/thru-connections");
  EXPECT_EQ(thruConnectionFile("relative", "/home/me"), "/home/me/.local/state/karvex/thru-connections");
  EXPECT_EQ(thruConnectionFile("", nullptr), std::nullopt);
}

TEST(AlsaMIDIServiceTest, WorksWithoutASequencer) {
  if (::access("/dev/snd/seq", R_OK | W_OK) == 0) {
    GTEST_SKIP() << "This machine has one.";
  }
  std::string told;
  karvex::foundation::log::redirectDebug([&](std::string_view line) { told += line; });
  karvex::foundation::VirtualRuntime runtime;
  const auto service = makeAlsaMIDIService(runtime);
  karvex::foundation::log::redirectDebug(nullptr);
  EXPECT_THAT(told, HasSubstr("No MIDI equipment: /dev/snd/seq: "));
  EXPECT_EQ(service->MIDIGetNumberOfDevices(), 0U);

  MIDIObjectRef client = 0;
  MIDIObjectRef port = 0;
  MIDIObjectRef destination = 0;
  int lists = 0;
  ASSERT_EQ(service->MIDIClientCreateWithBlock("client", client, nullptr), noErr);
  ASSERT_EQ(service->MIDIDestinationCreateWithBlock(client, "ours", destination,
                                                    [&](const MIDIPacketList&, ConnectionToken) { ++lists; }),
            noErr);
  ASSERT_EQ(service->MIDIOutputPortCreate(client, "out", port), noErr);
  MIDIPacketList list(100);
  ASSERT_TRUE(list.add(0, {{0xF8}}));
  ASSERT_EQ(service->MIDISend(port, destination, list), noErr);
  runtime.clock().sleepFor(std::chrono::milliseconds(1));
  EXPECT_EQ(lists, 1);
  EXPECT_EQ(service->MIDIEndpointDispose(destination), noErr);
}

}  // namespace
}  // namespace midikit::io::alsa
