#pragma once

#include <cstdint>
#include <string>

#include "rig/service/ServiceFaults.hpp"

namespace karvex::rig {

/// How much of an answer goes out.
enum class AnswerEnd : std::uint8_t {
  whole,
  cutOff,   ///< half of the body, under a length that promises all of it
  endless,  ///< the body again and again
  never,    ///< not a byte
};

/// An answer over HTTP as it will go out.
struct ServiceAnswer {
  int status = 200;
  std::string contentType = "text/plain";
  std::string body = "OK\n";
  std::string location;  ///< where a redirect points; empty if it is none
  AnswerEnd end = AnswerEnd::whole;
};

/// A page of HTML, as web servers make them for a status.
ServiceAnswer errorPage(int status, const std::string& reason);

/// What becomes of a proper answer under a fault.
ServiceAnswer spoilAnswer(ServiceAnswer answer, const ServiceFault& fault);

}  // namespace karvex::rig
