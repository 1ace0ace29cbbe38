/// A ring of lights around a knob. It shows what controller changes on MIDI channel 1 tell it:
/// General Purpose 1 the value, and the next three the hue, the brightness and the style (64 and
/// above: an arc).

#include "common/midi.h"
#include "common/midi_in.h"
#include "common/midi_port.h"
#include "common/tick.h"
#include "led-ring/light_line.h"
#include "led-ring/ring.h"

enum { channel = 0, pictureMilliseconds = 10, glideShare = 4 };

static struct RingView wanted = {.hue = 84, .brightness = 96, .style = ringArc};
static struct RingView shown = {.hue = 84, .brightness = 0, .style = ringArc};
static struct Light lights[ringLights];
static struct MidiReader reader;

static void handleController(uint8_t controller, uint8_t value) {
  switch (controller) {
    case midiGeneralPurpose1:
      wanted.value = value;
      break;
    case midiGeneralPurpose1 + 1:
      wanted.hue = value;
      break;
    case midiGeneralPurpose1 + 2:
      wanted.brightness = value;
      break;
    case midiGeneralPurpose1 + 3:
      wanted.style = value >= 64 ? ringArc : ringDot;
      break;
    default:
      break;
  }
}

static void handleMidi(void) {
  uint8_t byte;
  struct MidiMessage message;
  while (midiPortReceive(&byte)) {
    if (midiRead(&reader, byte, &message) && message.status == (midiControlChange | channel)) {
      handleController(message.data1, message.data2);
    }
  }
}

/// A quarter of the way, and at least one step.
static uint8_t glide(uint8_t from, uint8_t to) {
  if (from < to) {
    return (uint8_t)(from + (to - from + glideShare - 1) / glideShare);
  }
  return (uint8_t)(from - (from - to + glideShare - 1) / glideShare);
}

static void drawNext(void) {
  shown.value = glide(shown.value, wanted.value);
  shown.brightness = glide(shown.brightness, wanted.brightness);
  shown.hue = wanted.hue;
  shown.style = wanted.style;
  ringDraw(&shown, lights);
  lightLineSend(lights);
}

int main(void) {
  lightLineStart();
  midiPortStart();
  tickStart();
  uint8_t sincePicture = 0;
  for (;;) {
    handleMidi();
    if (tickElapsed() && ++sincePicture == pictureMilliseconds) {
      sincePicture = 0;
      drawNext();
    }
  }
}
