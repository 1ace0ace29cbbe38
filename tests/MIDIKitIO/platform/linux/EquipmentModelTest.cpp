#include "MIDIKitIO/platform/linux/EquipmentModel.hpp"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "MIDIKitIO/platform/MIDIPropertyKeys.hpp"
#include "MIDIKitIO/platform/engine/MIDIServiceEngine.hpp"
#include "foundation/run/SerialQueue.hpp"
#include "foundation/run/VirtualRuntime.hpp"

namespace midikit::io::alsa {
namespace {

using engine::MIDIObjectKind;
using testing::ElementsAre;
using testing::IsEmpty;

struct BareDriver final : engine::MIDIDriver {
  void attach(engine::MIDIDriverHost& itsHost) override { host = &itsHost; }
  engine::MIDIDriverHost* host = nullptr;
};

SequencerClient board(int client, std::string name = "Board", int ports = 1) {
  SequencerClient made{.number = client, .name = std::move(name), .isKernel = true, .card = 1};
  for (int number = 0; number < ports; ++number) {
    made.ports.push_back({number, fmt::format("Port {}", number), true, true});
  }
  return made;
}

SequencerClient program(int client, std::string name = "Program", std::string port = "out") {
  return {.number = client, .name = std::move(name), .ports = {{0, std::move(port), true, false}}};
}

class EquipmentModelTest : public testing::Test {
 protected:
  using Ref = MIDIObjectRef;

  EquipmentModelTest() {
    EXPECT_EQ(service_.MIDIClientCreateWithBlock(
                  "test", client_,
                  [this](const MIDINotification& message) { reported_.push_back(lineOf(message)); }),
              noErr);
  }

  /// What clients were told when the sequencer came to look like this.
  std::vector<std::string> show(const std::vector<SequencerClient>& clients,
                                const std::string& serial = "A1") {
    const std::map<int, CardFacts> cards = {
        {1,
         {.id = "Board",
          .usb = UsbFacts{
              .vendorId = "16c0", .productId = "0485", .serialNumber = serial, .product = "Product"}}}};
    driver_->host->edit(
        [&](engine::SetupEditor& editor) { model_.update(equipmentOf(clients, cards, 200), editor); });
    runtime_.clock().sleepFor(std::chrono::milliseconds(1));
    return std::exchange(reported_, {});
  }

  static std::string lineOf(const MIDINotification& message) {
    static constexpr std::array kinds = {"device", "entity", "source", "destination"};
    const auto kind = [](std::int32_t type) { return kinds.at(static_cast<std::size_t>(type)); };
    if (const auto* child = std::get_if<MIDINotification::Child>(&message.payload)) {
      return std::string(message.messageID == 2 ? "added " : "removed ") + kind(child->childType);
    }
    if (const auto* property = std::get_if<MIDINotification::Property>(&message.payload)) {
      return property->propertyName + " of " + kind(property->objectType);
    }
    return message.messageID == 1 ? "setup" : "other";
  }

  std::string name(Ref object) const {
    std::optional<std::string> text;
    return service_.MIDIObjectGetStringProperty(object, kMIDIPropertyName, text) == noErr ? *text : "";
  }
  std::int32_t number(Ref object, std::string_view key) const {
    std::int32_t value = -1;
    return service_.MIDIObjectGetIntegerProperty(object, key, value) == noErr ? value : -1;
  }

  karvex::foundation::VirtualRuntime runtime_;
  std::vector<std::string> reported_;
  std::shared_ptr<BareDriver> driver_ = std::make_shared<BareDriver>();
  engine::MIDIServiceEngine service_{
      runtime_, {13, 0}, std::make_shared<engine::ThruConnectionStore>(), driver_};
  Ref client_ = 0;
  karvex::foundation::SerialQueue queue_{runtime_.globalQueue()};
  std::vector<Ref> readFor_;
  EquipmentModel model_{[this](Ref destination) {
    readFor_.push_back(destination);
    return std::make_shared<engine::ListReceiver>(runtime_, queue_, MIDIReadBlock());
  }};
};

TEST_F(EquipmentModelTest, ABoardComesLeavesAndIsBackAsTheSameObject) {
  EXPECT_THAT(show({board(20)}),
              ElementsAre("added device", "added entity", "added source", "added destination", "setup"));
  const Ref device = service_.MIDIGetDevice(0);
  const Ref source = service_.MIDIGetSource(0);
  EXPECT_THAT(readFor_, ElementsAre(service_.MIDIGetDestination(0)));
  EXPECT_EQ(model_.sourceAt({20, 0}), source);
  EXPECT_EQ(model_.addressOf(source), (PortAddress{20, 0}));
  EXPECT_THAT(show({board(20)}), IsEmpty()) << "nothing new";

  ASSERT_EQ(service_.MIDIObjectSetStringProperty(device, kMIDIPropertyImage, "kept"), noErr);
  ASSERT_EQ(service_.MIDIObjectSetIntegerProperty(source, kMIDIPropertyUniqueID, 77), noErr);
  show({board(20)});
  EXPECT_THAT(show({}), ElementsAre("offline of device", "setup"));
  EXPECT_EQ(number(source, kMIDIPropertyOffline), 1);
  EXPECT_EQ(model_.sourceAt({20, 0}), 0U);
  EXPECT_EQ(model_.addressOf(source), std::nullopt);
  EXPECT_THAT(show({}), IsEmpty());

  EXPECT_THAT(show({board(23, "Board 2")}), ElementsAre("name of device", "offline of device", "setup"))
      << "with other firmware, as another client";
  EXPECT_EQ(service_.MIDIGetDevice(0), device);
  EXPECT_EQ(service_.MIDIGetNumberOfDevices(), 1U);
  EXPECT_EQ(name(device), "Board 2");
  EXPECT_EQ(number(device, kMIDIPropertyOffline), 0);
  EXPECT_EQ(model_.addressOf(source), (PortAddress{23, 0}));
  EXPECT_EQ(number(source, kMIDIPropertyUniqueID), 77) << "what a user set stays";
}

TEST_F(EquipmentModelTest, PortsOfADeviceComeAndGo) {
  show({board(20)});
  const Ref entity = service_.MIDIDeviceGetEntity(service_.MIDIGetDevice(0), 0);
  EXPECT_THAT(show({board(20, "Board", 2)}),
              ElementsAre("added entity", "added source", "added destination", "setup"));
  EXPECT_EQ(model_.sourceAt({20, 1}), service_.MIDIGetSource(1));

  auto changed = board(20, "Board", 2);
  changed.ports[1].isWritable = false;
  EXPECT_THAT(show({changed}), ElementsAre("removed destination", "removed source", "removed entity",
                                           "added entity", "added source", "setup"));
  changed.ports[0].name = "Renamed";
  EXPECT_THAT(show({changed}), ElementsAre("name of entity", "name of source", "name of destination"));
  EXPECT_EQ(service_.MIDIDeviceGetEntity(service_.MIDIGetDevice(0), 0), entity);
}

TEST_F(EquipmentModelTest, PortsOfProgramsGoWithThem) {
  EXPECT_THAT(show({program(128)}), ElementsAre("added source", "setup"));
  const auto id = number(service_.MIDIGetSource(0), kMIDIPropertyUniqueID);
  EXPECT_THAT(show({program(128, "Program", "renamed")}),
              ElementsAre("name of source", "displayName of source"));
  EXPECT_THAT(show({}), ElementsAre("removed source", "setup"));
  EXPECT_EQ(service_.MIDIGetNumberOfSources(), 0U);
  show({program(131)});
  const Ref source = service_.MIDIGetSource(0);
  EXPECT_EQ(number(source, kMIDIPropertyUniqueID), id) << "the same after a restart";

  model_.leave(131, std::nullopt);
  EXPECT_EQ(model_.addressOf(source), std::nullopt) << "at once";
  EXPECT_THAT(show({program(131)}), IsEmpty()) << "it was back at its address before anyone looked";
  EXPECT_EQ(model_.addressOf(source), (PortAddress{131, 0}));
  model_.leave(131, 0);
  EXPECT_THAT(show({program(131, "Stranger")}), ElementsAre("removed source", "added source", "setup"));
}

TEST_F(EquipmentModelTest, OnlySoManyAbsentDevicesAreRemembered) {
  for (std::size_t count = 0; count < EquipmentModel::mostOffline + 3; ++count) {
    show({board(20)}, fmt::format("N{}", count));
  }
  EXPECT_EQ(service_.MIDIGetNumberOfDevices(), EquipmentModel::mostOffline + 1);
  std::optional<std::string> serial;
  ASSERT_EQ(service_.MIDIObjectGetStringProperty(service_.MIDIGetDevice(0), serialNumberPropertyKey, serial),
            noErr);
  EXPECT_EQ(serial, "N2") << "those that left first are forgotten first";
}

}  // namespace
}  // namespace midikit::io::alsa
