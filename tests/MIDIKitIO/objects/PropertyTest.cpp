#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <string>
#include <string_view>

#include "MIDIKitIO/objects/AnyMIDIIOObject.hpp"
#include "MIDIKitIO/objects/ObjectFor.hpp"
#include "MIDIKitIO/objects/PropertyAccess.hpp"
#include "MIDIKitIO/objects/PropertyText.hpp"
#include "tests/MIDIKitIO/MIDITestFixture.hpp"

namespace midikit::io {
namespace {

using core::MIDIIOError;
using core::MIDIOSStatus;
using karvex::rig::MIDIOperation;

/// One value of a property and the text that it has to have.
struct Expectation {
  PropertyValue value;
  std::string text;
};

/// How values of one form read: good ones, one that isn't there, one of another kind.
struct Form {
  std::vector<Expectation> good;
  std::string unset;
  Expectation wrongKind;
};

const Form text{{{"a text", "a text"}, {"", ""}}, "-", {7, "-"}};
const Form number{{{-2147483647 - 1, "-2147483648"}, {31250, "31250"}}, "0", {"7", "0"}};
const Form yesNo{{{1, "Yes"}, {0, "No"}, {2, "No"}, {-1, "No"}}, "No", {"1", "No"}};
const Form mask{{{5, "0b00000101"},
                 {0x1FF, "0b111111111"},
                 {-1, "0b11111111111111111111111111111111"},
                 {0, "0b00000000"}},
                "0b00000000",
                {"5", "0b00000000"}};
const Form protocol{{{1, "MIDI 1.0"}, {2, "MIDI 2.0"}}, "MIDI 2.0", {"1", "MIDI 2.0"}};
const Form dictionary{
    {{PropertyDictionary{}, "{}"},
     {PropertyDictionary{{"b", 1}, {"a", "say \"hi\" \\"}, {"c", PropertyDictionary{{"d", "e"}}}},
      R"({"a": "say \"hi\" \\", "b": 1, "c": {"d": "e"}})"}},
    "-",
    {"a text", "-"}};
const Form file{{{"/a b/50%/\xC3\xA9.app", "file:///a%20b/50%25/%C3%A9.app"},
                 {"/usr/(x)&~.png", "file:///usr/(x)&~.png"},
                 {"", "-"}},
                "-",
                {7, "-"}};

struct Row {
  std::string_view label;
  std::string_view caseName;
  std::string_view kinds;  ///< a letter for each object type that has it
  const Form& form;
  std::string_view key;
};

// clang-format off
const std::array<Row, 45> rows = {{
    {"Name", "name", "DEIO", text, "name"},
    {"Model", "model", "DEIO", text, "model"},
    {"Manufacturer", "manufacturer", "DEIO", text, "manufacturer"},
    {"Unique ID", "uniqueID", "DEIO", number, "uniqueID"},
    {"Device ID", "deviceID", "DE", number, "deviceID"},
    {"Supports MMC", "supportsMMC", "DEIO", yesNo, "supports MMC"},
    {"Supports General MIDI", "supportsGeneralMIDI", "DEIO", yesNo, "supports General MIDI"},
    {"Supports Show Control", "supportsShowControl", "DEIO", yesNo, "supports show control"},
    {"Name Configuration Dictionary", "nameConfigurationDictionary", "D", dictionary, "nameConfigurationDictionary"},
    {"Max SysEx Speed", "maxSysExSpeed", "DEIO", number, "max SysEx speed"},
    {"Driver Device Editor App", "driverDeviceEditorApp", "D", file, "driver device editor app"},
    {"Image (File URL)", "image", "D", file, "image"},
    {"Display Name", "displayName", "IO", text, "displayName"},
    {"Pan Disrupts Stereo", "panDisruptsStereo", "DE", yesNo, "pan disrupts stereo"},
    {"Protocol ID", "protocolID", "IO", protocol, "protocol"},
    {"Transmits MTC", "transmitsMTC", "DEIO", yesNo, "transmits MTC"},
    {"Receives MTC", "receivesMTC", "DEIO", yesNo, "receives MTC"},
    {"Transmits Clock", "transmitsClock", "DEIO", yesNo, "transmits clock"},
    {"Receives Clock", "receivesClock", "DEIO", yesNo, "receives clock"},
    {"Advance Schedule Time (μs)", "advanceScheduleTimeMuSec", "DE", text, "scheduleAheadMuSec"},
    {"Is Mixer", "isMixer", "DE", yesNo, "is mixer"},
    {"Is Sampler", "isSampler", "DE", yesNo, "is sampler"},
    {"Is Effect Unit", "isEffectUnit", "DE", yesNo, "is effect unit"},
    {"Is Drum Machine", "isDrumMachine", "DE", yesNo, "is drum machine"},
    {"Is Offline", "isOffline", "DEIO", yesNo, "offline"},
    {"Is Private", "isPrivate", "IO", yesNo, "private"},
    {"Driver Owner", "driverOwner", "DEIO", text, "driver"},
    {"Driver Version", "driverVersion", "DEIO", number, "driver version"},
    {"Can Route", "canRoute", "DE", yesNo, "can route"},
    {"Is Broadcast", "isBroadcast", "IO", yesNo, "broadcast"},
    {"Connection Unique ID", "connectionUniqueID", "IO", number, "connUniqueID"},
    {"Is Embedded Entity", "isEmbeddedEntity", "EIO", yesNo, "embedded"},
    {"Single Realtime Entity", "singleRealtimeEntity", "DIO", number, "single realtime entity"},
    {"Receive Channels", "receiveChannels", "DEIO", mask, "receive channels"},
    {"Transmit Channels", "transmitChannels", "DEIO", mask, "transmit channels"},
    {"Max Receive Channels", "maxReceiveChannels", "D", number, "max receive channels"},
    {"Max Transmit Channels", "maxTransmitChannels", "D", number, "max transmit channels"},
    {"Receives Bank Select LSB", "receivesBankSelectLSB", "DE", yesNo, "receives bank select LSB"},
    {"Receives Bank Select MSB", "receivesBankSelectMSB", "DE", yesNo, "receives bank select MSB"},
    {"Transmits Bank Select LSB", "transmitsBankSelectLSB", "DE", yesNo, "transmits bank select LSB"},
    {"Transmits Bank Select MSB", "transmitsBankSelectMSB", "DE", yesNo, "transmits bank select MSB"},
    {"Receives Notes", "receivesNotes", "DE", yesNo, "receives notes"},
    {"Transmits Notes", "transmitsNotes", "DE", yesNo, "transmits notes"},
    {"Receives Program Changes", "receivesProgramChanges", "DE", yesNo, "receives program changes"},
    {"Transmits Program Changes", "transmitsProgramChanges", "DE", yesNo, "transmits program changes"},
}};
// clang-format on

/// One object of each type, in the order of MIDIIOObjectType.
class PropertyTest : public MIDITestFixture {
 protected:
  PropertyTest() {
    service->addDevice(karvex::rig::simpleDevice("a device"));
    const auto entity = service->MIDIDeviceGetEntity(service->MIDIGetDevice(0), 0);
    objects = {service->MIDIGetDevice(0), entity, service->MIDIGetDestination(0), service->MIDIGetSource(0)};
  }

  std::array<MIDIObjectRef, 4> objects{};
};

TEST_F(PropertyTest, EachPropertyOfEachKindOfObjectHasATextForWhateverItHolds) {
  for (const auto object : objects) {
    for (std::size_t index = 0; index < rows.size(); ++index) {
      const auto& row = rows.at(index);
      SCOPED_TRACE(std::string(row.label) + " of object " + std::to_string(object));
      const auto property = static_cast<MIDIIOProperty>(index);
      const auto textWith = [&](const PropertyValue& value) {
        EXPECT_EQ(service->setProperty(object, row.key, value), noErr);
        return propertyText(*service, object, property);
      };
      for (const auto& good : row.form.good) {
        EXPECT_EQ(textWith(good.value), good.text);
      }
      if (property == MIDIIOProperty::uniqueID) {
        // The service keeps one of another kind from being set.
        service->calls().failNext(MIDIOperation::objectGetIntegerProperty,
                                  MIDIOSStatus(MIDIOSStatus::wrongPropertyType).number());
        EXPECT_EQ(propertyText(*service, object, property), row.form.wrongKind.text);
      } else {
        EXPECT_EQ(textWith(row.form.wrongKind.value), row.form.wrongKind.text);
      }
      EXPECT_EQ(service->removeProperty(object, row.key), noErr);
      EXPECT_EQ(propertyText(*service, object, property), row.form.unset);
    }
  }
}

TEST_F(PropertyTest, TheTableHasEachPropertyUnderItsNamesAndKey) {
  for (std::size_t index = 0; index < rows.size(); ++index) {
    const auto property = static_cast<MIDIIOProperty>(index);
    EXPECT_EQ(traitsOf(property).label, rows.at(index).label);
    EXPECT_EQ(traitsOf(property).caseName, rows.at(index).caseName);
    EXPECT_EQ(propertyForKey(rows.at(index).key, {13, 0}), property);
  }
  EXPECT_EQ(propertyForKey("no such key", {13, 0}), std::nullopt);
}

TEST_F(PropertyTest, AnObjectListsAllPropertiesOrThoseOfItsKindInOrder) {
  constexpr std::string_view letters = "DEIO";
  for (std::size_t type = 0; type < objects.size(); ++type) {
    const auto object = objectFor(*service, objects.at(type), std::array{0, 1, 3, 2}.at(type));
    ASSERT_EQ(object->objectType(), static_cast<MIDIIOObjectType>(type));
    const auto listed = [&](bool onlyRelevant) {
      std::vector<std::string_view> labels;
      for (const auto& [label, value] : object->properties(*service, onlyRelevant)) {
        labels.push_back(label);
        EXPECT_EQ(value, object->propertyText(
                             *service, static_cast<MIDIIOProperty>(std::distance(
                                           rows.begin(), std::ranges::find(rows, label, &Row::label)))));
      }
      return labels;
    };
    std::vector<std::string_view> all;
    std::vector<std::string_view> relevant;
    for (const auto& row : rows) {
      all.push_back(row.label);
      if (row.kinds.find(letters[type]) != std::string_view::npos) {
        relevant.push_back(row.label);
      }
    }
    EXPECT_EQ(listed(false), all);
    EXPECT_EQ(listed(true), relevant);
  }
}

TEST_F(PropertyTest, APlatformThatIsTooOldForAPropertySaysSo) {
  const auto property = [this](PlatformVersion version, MIDIIOProperty which) {
    const auto old = serviceOf(version);
    const auto device = old->addDevice(karvex::rig::simpleDevice("a device"));
    old->setProperty(
        device, traitsOf(which).platformKey,
        which == MIDIIOProperty::protocolID ? PropertyValue(1) : PropertyValue(PropertyDictionary()));
    return propertyText(*old, device, which);
  };
  const std::string needs11 = "OS not supported. Requires macOS 11.0, macCatalyst 14.0, or iOS 14.0.";
  const std::string needs1015 = "OS not supported. Requires macOS 10.15, macCatalyst 13.0, or iOS 13.0.";
  EXPECT_EQ(property({10, 15}, MIDIIOProperty::protocolID), needs11);
  EXPECT_EQ(property({11, 0}, MIDIIOProperty::protocolID), "MIDI 1.0");
  EXPECT_EQ(property({10, 14}, MIDIIOProperty::nameConfigurationDictionary), needs1015);
  EXPECT_EQ(property({10, 15}, MIDIIOProperty::nameConfigurationDictionary), "{}");

  EXPECT_EQ(platformKey(MIDIIOProperty::protocolID, {10, 15}), "");
  EXPECT_EQ(propertyForKey("protocol", {10, 15}), std::nullopt);
  EXPECT_EQ(propertyForKey("", {10, 14}), std::nullopt) << "no key is no property's";
}

TEST_F(PropertyTest, ARelativePathCountsFromTheWorkingDirectory) {
  EXPECT_EQ(fileURLText("x.png"), fileURLText((std::filesystem::current_path() / "x.png").native()));
}

TEST_F(PropertyTest, WhyASinglePropertyCantBeReadReachesTheCaller) {
  const auto device = objects.front();
  const auto textError = [&](std::string_view key) {
    return errorOf([&] { textProperty(*service, device, key); });
  };
  const auto dictionaryError = [&](std::string_view key) {
    return errorOf([&] { dictionaryProperty(*service, device, key); });
  };
  EXPECT_EQ(textError("image"), MIDIIOError::osStatus(MIDIOSStatus::unknownProperty));
  EXPECT_EQ(dictionaryError("image"), MIDIIOError::osStatus(MIDIOSStatus::unknownProperty));
  service->answerWithNone(device, "image");
  EXPECT_EQ(textError("image"),
            MIDIIOError::readError("Got nil while reading MIDIEndpointRef property value \"image\""));
  EXPECT_EQ(dictionaryError("image"),
            MIDIIOError::readError("Got nil while reading MIDIEndpointRef property list."));
  EXPECT_EQ(propertyText(*service, device, MIDIIOProperty::image), "-");

  service->calls().failNext(MIDIOperation::objectGetStringProperty, -50);
  EXPECT_EQ(textError("name"), MIDIIOError::osStatus(MIDIOSStatus::internalError));
  EXPECT_EQ(textProperty(*service, device, "name"), "a device");
  service->calls().failNext(MIDIOperation::objectGetIntegerProperty, -50);
  EXPECT_EQ(integerProperty(*service, device, "uniqueID"), 0) << "a status is not looked at";
}

}  // namespace
}  // namespace midikit::io
