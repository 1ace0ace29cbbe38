#include "foundation/Log.hpp"

#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/sinks/syslog_sink.h>
#include <spdlog/spdlog.h>
#include <syslog.h>
#include <unistd.h>

#include <memory>
#include <utility>

namespace karvex::foundation::log {
namespace {

using Formatter = spdlog::pattern_formatter;

/// A sink that writes the text and nothing else but `lineEnd` behind it.
template <typename Sink>
spdlog::sink_ptr plainSink(std::string lineEnd) {
  auto sink = std::make_shared<Sink>();
  sink->set_formatter(
      std::make_unique<Formatter>("%v", spdlog::pattern_time_type::local, std::move(lineEnd)));
  return sink;
}

class Channel {
 public:
  Channel(std::string name, spdlog::sink_ptr sink) : logger_(std::move(name), std::move(sink)) {
    logger_.flush_on(spdlog::level::trace);
  }

  void write(std::string_view text) {
    if (receiver_) {
      receiver_(text);
    } else {
      logger_.log(spdlog::level::info, spdlog::string_view_t(text.data(), text.size()));
    }
  }
  void redirect(Receiver receiver) { receiver_ = std::move(receiver); }
  void setSinks(std::vector<spdlog::sink_ptr> sinks) { logger_.sinks() = std::move(sinks); }

 private:
  spdlog::logger logger_;
  Receiver receiver_;
};

Channel& systemChannel() {
  static Channel channel("system", plainSink<spdlog::sinks::stderr_sink_mt>("\n"));
  return channel;
}

Channel& printChannel() {
  static Channel channel("print", plainSink<spdlog::sinks::stdout_sink_mt>(""));
  return channel;
}

Channel& debugChannel() {
  static Channel channel("debug", plainSink<spdlog::sinks::stderr_sink_mt>("\n"));
  return channel;
}

std::string_view withoutLineEnd(std::string_view text) {
  return text.ends_with('\n') ? text.substr(0, text.size() - 1) : text;
}

}  // namespace

void system(std::string_view text) {
  systemChannel().write(withoutLineEnd(text));
}
void print(std::string_view text) {
  printChannel().write(text);
}
void debug(std::string_view text) {
  debugChannel().write(withoutLineEnd(text));
}

void setSystemSink(SystemSink sink) {
  std::vector<spdlog::sink_ptr> sinks;
  if (sink == SystemSink::systemLog) {
    auto syslogSink = std::make_shared<spdlog::sinks::syslog_sink_mt>("karvex", LOG_PID, LOG_USER, true);
    syslogSink->set_pattern("%v");
    sinks.push_back(std::move(syslogSink));
  }
  if (sink == SystemSink::standardError || isatty(STDERR_FILENO) != 0) {
    sinks.push_back(plainSink<spdlog::sinks::stderr_sink_mt>("\n"));
  }
  systemChannel().setSinks(std::move(sinks));
}

void redirectSystem(Receiver receiver) {
  systemChannel().redirect(std::move(receiver));
}
void redirectPrint(Receiver receiver) {
  printChannel().redirect(std::move(receiver));
}
void redirectDebug(Receiver receiver) {
  debugChannel().redirect(std::move(receiver));
}

}  // namespace karvex::foundation::log
