#include "device/platform/linux/TerminalTermios.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

namespace karvex::device {
namespace {

constexpr std::array<speed_t, baudRateCount> speeds = {
    B0,    B50,   B75,   B110,  B134,   B150,   B200,   B300,    B600,    B1200,
    B1800, B2400, B4800, B9600, B19200, B38400, B57600, B115200, B230400,
};

constexpr std::array<tcflag_t, 4> dataSizes = {CS5, CS6, CS7, CS8};
constexpr std::array<tcflag_t, 3> parities = {0, PARENB, PARENB | PARODD};

template <typename Table, typename Position>
auto at(const Table& table, Position position) {
  return table.at(static_cast<std::size_t>(position));
}

tcflag_t flagIf(bool condition, tcflag_t flag) {
  return condition ? flag : 0;
}

void change(tcflag_t& flags, tcflag_t cleared, tcflag_t set) {
  flags = (flags & ~cleared) | set;
}

}  // namespace

termios termiosWith(const termios& present, const SerialPortSettings& settings) {
  constexpr tcflag_t softwareFlow = IXON | IXOFF | IXANY;
  termios wanted = present;
  cfsetispeed(&wanted, at(speeds, settings.baudRateSetting.receiveRate));
  cfsetospeed(&wanted, at(speeds, settings.baudRateSetting.transmitRate));
  change(wanted.c_iflag, INLCR | IGNCR | ICRNL | softwareFlow,
         flagIf(settings.useSoftwareFlowControl, softwareFlow));
  change(wanted.c_cflag, CSIZE | CSTOPB | CREAD | CLOCAL | CRTSCTS,
         CREAD | CLOCAL | flagIf(settings.sendTwoStopBits, CSTOPB) |
             flagIf(settings.useHardwareFlowControl, CRTSCTS) | at(dataSizes, settings.dataBitsSize) |
             at(parities, settings.parityType));
  change(wanted.c_lflag, ICANON | ISIG | ECHO | ECHOE, 0);
  change(wanted.c_oflag, OPOST, flagIf(settings.processOutput, OPOST));
  std::fill(std::begin(wanted.c_cc), std::end(wanted.c_cc), cc_t{0});
  wanted.c_cc[VMIN] = static_cast<cc_t>(settings.minimumBytesToRead);
  wanted.c_cc[VTIME] = static_cast<cc_t>(settings.timeout);
  return wanted;
}

std::vector<termios> termiosSteps(const termios& present, const SerialPortSettings& settings) {
  std::vector<termios> steps = {termiosWith(present, settings)};
  if (cfgetospeed(&present) == B134 && cfgetospeed(&steps.back()) == B134) {
    steps.insert(steps.begin(), steps.back());
    cfsetispeed(&steps.front(), B9600);
    cfsetospeed(&steps.front(), B9600);
  }
  return steps;
}

}  // namespace karvex::device
