#include "MIDIKitIO/ports/MIDIIdentifierPersistence.hpp"

namespace midikit::io {
namespace {

using Persistence = MIDIIdentifierPersistence;
using karvex::foundation::UserDefaults;

std::shared_ptr<UserDefaults> suiteOf(const Persistence::UserDefaultsManaged& managed) {
  return managed.suite ? managed.suite : UserDefaults::standard();
}

struct Read {
  std::optional<std::int32_t> operator()(const Persistence::Unmanaged& unmanaged) const {
    return unmanaged.uniqueID;
  }
  std::optional<std::int32_t> operator()(const Persistence::UserDefaultsManaged& managed) const {
    const auto stored = suiteOf(managed)->integer(managed.key);
    return stored && std::in_range<std::int32_t>(*stored) ? std::optional(static_cast<std::int32_t>(*stored))
                                                          : std::nullopt;
  }
  std::optional<std::int32_t> operator()(const Persistence::ManagedStorage& storage) const {
    return storage.readHandler ? storage.readHandler() : std::nullopt;
  }
  std::optional<std::int32_t> operator()(const Persistence::AdHoc&) const { return std::nullopt; }
};

struct Store {
  void operator()(const Persistence::UserDefaultsManaged& managed) const {
    suiteOf(managed)->setInteger(managed.key, uniqueID);
  }
  void operator()(const Persistence::ManagedStorage& storage) const {
    if (storage.storeHandler) {
      storage.storeHandler(uniqueID);
    }
  }
  void operator()(const auto& /*unmanaged or ad hoc*/) const {}

  std::optional<std::int32_t> uniqueID;
};

}  // namespace

std::optional<std::int32_t> MIDIIdentifierPersistence::read() const {
  return std::visit(Read(), case_);
}

void MIDIIdentifierPersistence::store(std::optional<std::int32_t> uniqueID) const {
  std::visit(Store{uniqueID}, case_);
}

}  // namespace midikit::io
