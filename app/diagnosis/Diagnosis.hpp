#pragma once

#include <optional>
#include <string>
#include <vector>

#include "device/platform/BoardSurvey.hpp"

/// What support asks first, as values. Nothing of it was found by touching the equipment.
namespace karvex::app {

/// One step of a check. The steps after one that failed have not been tried.
struct CheckStep {
  enum class Result { well, failed, notTried };

  std::string name;
  Result result = Result::notTried;
  std::string detail;
};

struct ServiceDiagnosis {
  std::string address;
  bool usesProxy = false;        ///< one is set in the environment; then names and connections are its affair
  std::vector<CheckStep> steps;  ///< name, connection, TLS, list
};

struct SystemDiagnosis {
  std::string system;  ///< "Debian GNU/Linux 12 (bookworm), Linux 6.1.0 x86_64"
  bool isRoot = false;
  std::string rulesFile;     ///< that of our udev rules; empty if there is none
  bool rulesAreOff = false;  ///< the file is empty, as who wants no rules makes it
  bool udevdRuns = false;
  std::vector<std::string> interferingPrograms;  ///< "ModemManager (process 812)"
  std::string midiNode;
  std::string midiObstacle;  ///< why the MIDI service can't be used; empty if it can
};

struct Diagnosis {
  std::string time;     ///< "2026-11-23 22:44:41 UTC"
  std::string program;  ///< "karvex-console 1.0.0"
  SystemDiagnosis system;
  ServiceDiagnosis service;
  std::vector<device::SurveyedBoard> boards;
  std::vector<std::string> failures;  ///< the last ones, oldest first
};

/// The report, in a form to paste: plain lines, each with its end. Texts of others that don't belong in a
/// line are replaced. Thread-safe: yes. Realtime-safe: no, it allocates.
std::string textOf(const Diagnosis& diagnosis);

}  // namespace karvex::app
