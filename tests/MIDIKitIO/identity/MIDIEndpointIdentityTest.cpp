#include "MIDIKitIO/identity/MIDIEndpointIdentity.hpp"

#include <string>
#include <unordered_set>
#include <vector>

#include "MIDIKitIO/identity/MIDIEndpointFilter.hpp"
#include "tests/MIDIKitIO/ManagerFixture.hpp"

namespace midikit::io {
namespace {

using Identity = MIDIEndpointIdentity;

MIDIInputEndpoint endpoint(const std::string& name, std::int32_t uniqueID, const std::string& displayName) {
  return {.name = name, .uniqueID = uniqueID, .displayName = displayName};
}

TEST(MIDIEndpointIdentityTest, AnIdentityMeansTheFirstEndpointThatFulfilsIt) {
  const std::vector<MIDIInputEndpoint> list = {endpoint("a", 1, "A"), endpoint("b", 2, ""),
                                               endpoint("a", 3, "B"), endpoint("", 4, "B")};
  const struct {
    const char* description;
    Identity identity;
    std::int32_t found;  ///< 0 for none
  } rows[] = {
      {"name", Identity::name("a"), 1},
      {"empty name", Identity::name(""), 4},
      {"names are no display names", Identity::name("A"), 0},
      {"display name", Identity::displayName("B"), 3},
      {"empty display name", Identity::displayName(""), 2},
      {"unique ID", Identity::uniqueID(3), 3},
      {"unknown unique ID", Identity::uniqueID(5), 0},
      {"the ID counts before an earlier display name", Identity::uniqueIDWithFallback(3, "A"), 3},
      {"the display name without the ID", Identity::uniqueIDWithFallback(5, "B"), 3},
      {"an empty display name is none", Identity::uniqueIDWithFallback(5, ""), 0},
      {"an ID with an empty display name", Identity::uniqueIDWithFallback(2, ""), 2},
  };
  for (const auto& row : rows) {
    const auto found = row.identity.locateIn(list);
    EXPECT_EQ(found ? found->uniqueID : 0, row.found) << row.description;
    EXPECT_TRUE(!found || row.identity.matches(*found)) << row.description;
    EXPECT_FALSE(row.identity.matches(endpoint("c", 9, "C"))) << row.description;
  }
}

TEST(MIDIEndpointIdentityTest, CasesOfOnePayloadAreDifferentAndSortedInASet) {
  const std::vector<Identity> sorted = {Identity::name("x"),    Identity::displayName("x"),
                                        Identity::uniqueID(-1), Identity::uniqueID(9),
                                        Identity::uniqueID(10), Identity::uniqueIDWithFallback(9, "x")};
  const MIDIEndpointIdentities set(sorted.rbegin(), sorted.rend());
  EXPECT_TRUE(std::ranges::equal(set, sorted));
  EXPECT_EQ(std::unordered_set<Identity>(sorted.begin(), sorted.end()).size(), sorted.size());
  EXPECT_EQ(description(set),
            "[Endpoint Name: \"x\", Endpoint Display Name: \"x\", UniqueID: -1, UniqueID: 9, UniqueID: 10, "
            "UniqueID: 9 with fallback EndpointDisplayName: \"x\"]");
}

using MIDIEndpointFilterTest = ManagerFixture;

TEST_F(MIDIEndpointFilterTest, OnlyIsAnIntersectionAndDropAUnion) {
  manager->addInput({.name = "in",
                     .tag = "in",
                     .persistence = MIDIIdentifierPersistence::unmanaged(3),
                     .receiver = writer()});
  manager->addOutput({.name = "out", .tag = "out", .persistence = MIDIIdentifierPersistence::unmanaged(2)});
  // Ownership goes by the unique ID alone, whatever the direction.
  const std::vector<MIDIInputEndpoint> all = {endpoint("keys", 1, ""), endpoint("pads", 2, ""),
                                              endpoint("mine", 3, "")};
  using enum MIDIEndpointFilterMask;
  const MIDIEndpointIdentities criteria = {Identity::name("pads"), Identity::name("keys"),
                                           Identity::name("nobody")};
  const MIDIEndpointIdentities nobody = {Identity::name("nobody")};
  const struct {
    const char* description;
    MIDIEndpointFilterMask mask;
    std::vector<std::string> staying;
    MIDIEndpointFilter filter;
  } rows[] = {
      {"only, empty", only, {"keys", "pads", "mine"}, {}},
      {"drop, empty", drop, {"keys", "pads", "mine"}, {}},
      {"only criteria", only, {"keys", "pads"}, {false, criteria}},
      {"drop criteria", drop, {"mine"}, {false, criteria}},
      {"only owned", only, {"pads", "mine"}, {true, {}}},
      {"drop owned", drop, {"keys"}, {true, {}}},
      {"only both", only, {"pads"}, {true, criteria}},
      {"drop both", drop, {}, {true, criteria}},
      {"only what nobody is", only, {}, {false, nobody}},
      {"drop what nobody is", drop, {"keys", "pads", "mine"}, {false, nobody}},
  };
  for (const auto& [description, mask, staying, filter] : rows) {
    EXPECT_EQ(namesOf(MIDIEndpointMaskedFilter(mask, filter).apply(all, *manager)), staying) << description;
  }
}

}  // namespace
}  // namespace midikit::io
