/// What runs from the reset vector to main(). The addresses come from the linker script.

#include <stdint.h>

#include "chip/cortex-m/startup.h"

extern uint32_t dataStart[], dataEnd[], bssStart[], bssEnd[];
extern const uint32_t dataImage[];

int main(void);
_Noreturn void resetHandler(void);

void resetHandler(void) {
  chipStart();
  const uint32_t* from = dataImage;
  for (uint32_t* to = dataStart; to < dataEnd; ++to) {
    *to = *from++;
  }
  for (uint32_t* to = bssStart; to < bssEnd; ++to) {
    *to = 0;
  }
  main();
  for (;;) {  // main() of a firmware does not return
  }
}
