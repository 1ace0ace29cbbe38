#include "led-ring/ring.h"

enum { lightUnits = 256, fullRing = ringLights * lightUnits };

/// The eye sees brightness as about the square root of power.
static uint8_t powerFor(unsigned level) {  // level: 0 to 255
  return (uint8_t)((level * level + 255u) / 256u);
}

/// The colour wheel in three equal parts: red to green, green to blue, blue to red.
static struct Light colourOf(uint8_t hue) {
  unsigned wheel = hue * 6u;  // 0 to 762
  uint8_t rising = (uint8_t)(wheel % 256u);
  uint8_t falling = (uint8_t)(255u - rising);
  switch (wheel / 256u) {
    case 0:
      return (struct Light){.red = falling, .green = rising};
    case 1:
      return (struct Light){.green = falling, .blue = rising};
    default:
      return (struct Light){.blue = falling, .red = rising};
  }
}

/// How much of light `index` is lit, 0 to 255. Edges are shared between neighbours, so that a
/// slowly turned knob moves the picture smoothly.
static unsigned coverage(const struct RingView* view, unsigned index) {
  int edge = view->value * (fullRing - lightUnits) / 127 + lightUnits;
  int lit = edge - (int)index * lightUnits;
  if (view->style == ringDot && lit > lightUnits) {
    lit = 2 * lightUnits - lit;
  }
  if (lit < 0) {
    return 0;
  }
  return lit > 255 ? 255u : (unsigned)lit;
}

void ringDraw(const struct RingView* view, struct Light lights[ringLights]) {
  struct Light colour = colourOf(view->hue);
  for (unsigned i = 0; i < ringLights; ++i) {
    unsigned power = powerFor(coverage(view, i)) * (view->brightness + 1u) / 128u;
    lights[i].blue = (uint8_t)(colour.blue * power / 255u);
    lights[i].green = (uint8_t)(colour.green * power / 255u);
    lights[i].red = (uint8_t)(colour.red * power / 255u);
  }
}
