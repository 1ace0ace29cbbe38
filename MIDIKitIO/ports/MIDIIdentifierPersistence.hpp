#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "foundation/files/UserDefaults.hpp"

namespace midikit::io {

/// Where the unique ID of a virtual endpoint is kept between runs, so that other programs find it again. The
/// ID is read before the endpoint is made, and the one that it got is stored afterwards, both on the
/// manager's eventQueue.
class MIDIIdentifierPersistence {
 public:
  using ReadHandler = std::function<std::optional<std::int32_t>()>;
  using StoreHandler = std::function<void(std::optional<std::int32_t>)>;

  struct Unmanaged {
    std::int32_t uniqueID;
  };
  struct UserDefaultsManaged {
    std::string key;
    std::shared_ptr<karvex::foundation::UserDefaults> suite;
  };
  struct ManagedStorage {
    ReadHandler readHandler;
    StoreHandler storeHandler;
  };
  struct AdHoc {};
  using Case = std::variant<Unmanaged, UserDefaultsManaged, ManagedStorage, AdHoc>;

  /// Always this one, if it is free. Nothing is stored.
  static MIDIIdentifierPersistence unmanaged(std::int32_t uniqueID) { return Case(Unmanaged{uniqueID}); }
  /// In user defaults; without a suite, in UserDefaults::standard(). A value that is no integer of 32 bits
  /// reads as none. If it can't be stored, the endpoint is there all the same and the debug log says so; it
  /// gets another ID in the next run.
  static MIDIIdentifierPersistence userDefaultsManaged(
      std::string key, std::shared_ptr<karvex::foundation::UserDefaults> suite = nullptr) {
    return Case(UserDefaultsManaged{std::move(key), std::move(suite)});
  }
  /// Wherever the handlers keep it. Either may be null. They run on the manager's eventQueue, while the
  /// caller that adds the endpoint waits: they must not call start(), remove(), removeAll() or an operation
  /// of the manager that adds something, which would wait for themselves. What they throw reaches that
  /// caller.
  static MIDIIdentifierPersistence managedStorage(ReadHandler readHandler, StoreHandler storeHandler) {
    return Case(ManagedStorage{std::move(readHandler), std::move(storeHandler)});
  }
  /// Nowhere: a new one in each run.
  static MIDIIdentifierPersistence adHoc() { return Case(AdHoc()); }

  /// Which it is, for `std::visit` or `std::get_if`.
  const Case& asCase() const { return case_; }

  /// The kept ID; none if there is none.
  ///
  /// Thread-safe: yes, as far as the handler is.
  /// Realtime-safe: no, it may read a file.
  std::optional<std::int32_t> read() const;

  /// Keeps the ID; without one, what was kept goes.
  ///
  /// Thread-safe: yes, as far as the handler is.
  /// Realtime-safe: no, it may write a file.
  void store(std::optional<std::int32_t> uniqueID) const;

 private:
  MIDIIdentifierPersistence(Case itsCase) : case_(std::move(itsCase)) {}

  Case case_;
};

}  // namespace midikit::io
