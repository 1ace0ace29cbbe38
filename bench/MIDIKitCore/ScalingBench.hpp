#pragma once

namespace midikit::bench {

/// Measures every conversion between the forms of a value over an array, beside the least that a conversion
/// between the same two types has to do: one shift, one product or one division.
void compareScaling(int rounds);

}  // namespace midikit::bench
