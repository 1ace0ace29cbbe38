#pragma once

#include <stdint.h>

/// The picture on a ring of 24 lights that shows one value.

enum { ringLights = 24 };

/// One light's colour, in the order in which the lights take it from the line.
struct Light {
  uint8_t blue;
  uint8_t green;
  uint8_t red;
};

/// How the ring shows the value: as one travelling light, or as an arc that grows from the start.
enum RingStyle { ringDot, ringArc };

/// What is to be seen; all numbers 0 to 127.
struct RingView {
  uint8_t value;
  uint8_t hue;
  uint8_t brightness;
  enum RingStyle style;
};

/// Works out the colours of all lights.
void ringDraw(const struct RingView* view, struct Light lights[ringLights]);
