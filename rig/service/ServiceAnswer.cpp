#include "rig/service/ServiceAnswer.hpp"

#include <fmt/format.h>

#include <utility>

#include "rig/service/ServedDevice.hpp"

namespace karvex::rig {
namespace {

/// However often it is repeated, this is the beginning of proper JSON: a reader that decodes as it goes finds
/// no reason to stop.
std::string endlessBlanks() {
  constexpr std::size_t blockSize = 16'384;
  return "[" + std::string(blockSize - 1, ' ');
}

ServiceAnswer ending(ServiceAnswer answer, AnswerEnd end) {
  answer.end = end;
  return answer;
}

ServiceAnswer withBody(ServiceAnswer answer, std::string body) {
  answer.body = std::move(body);
  return answer;
}

}  // namespace

ServiceAnswer errorPage(int status, const std::string& reason) {
  return {.status = status,
          .contentType = "text/html",
          .body = fmt::format("<!DOCTYPE html>\n<html><head><title>{0} {1}</title></head>\n"
                              "<body><h1>{1}</h1></body></html>\n",
                              status, reason)};
}

ServiceAnswer spoilAnswer(ServiceAnswer answer, const ServiceFault& fault) {
  switch (fault.kind) {
    case Misbehaviour::slow:
    case Misbehaviour::wrongCertificate:
      break;  // They don't show in the answer.
    case Misbehaviour::silent:
      return ending(std::move(answer), AnswerEnd::never);
    case Misbehaviour::cutOff:
      return ending(std::move(answer), AnswerEnd::cutOff);
    case Misbehaviour::endless:
      return ending(withBody(std::move(answer), endlessBlanks()), AnswerEnd::endless);
    case Misbehaviour::notFound:
      return errorPage(404, "Not Found");
    case Misbehaviour::serverError:
      return errorPage(500, "Internal Server Error");
    case Misbehaviour::redirectElsewhere:
      return {.status = 302, .body = "Look elsewhere.\n", .location = fault.text};
    case Misbehaviour::notJson:
      answer.body.insert(0, "<br />\n<b>Warning</b>: no database, trying the backup<br />\n");
      break;
    case Misbehaviour::emptyList:
      return withBody(std::move(answer), "[]\n");
    case Misbehaviour::missingKey:
    case Misbehaviour::nullValue:
    case Misbehaviour::wrongType:
    case Misbehaviour::outOfRange:
    case Misbehaviour::unknownMcu:
      answer.body = spoilList(answer.body, fault);
      break;
  }
  return answer;
}

}  // namespace karvex::rig
