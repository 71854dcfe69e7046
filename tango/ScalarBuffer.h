#pragma once

#include "tango/ScalarTable.h"

#include <tango/tango.h>

namespace kora {

/// What the value of a scalar is handed to TANGO from. It must live until the answer or the event is on its way.
struct ScalarBuffer
{
    Tango::DevDouble number = 0;
    Tango::DevShort position = 0;
    Tango::DevBoolean flag = false;
    std::string text;
    Tango::DevString characters = nullptr;
};

/// Puts the value of a scalar into the buffer and calls action(pointer, valid) with it in TANGO's type.
template <typename Action>
void handValue(ScalarBuffer& buffer, const Scalar& scalar, const Snapshot& snapshot, Action action)
{
    if (scalar.type == ScalarType::Text) {
        const Reading<std::string> reading = scalar.text(snapshot);
        buffer.text = reading.value;
        buffer.characters = buffer.text.data();
        return action(&buffer.characters, reading.valid);
    }
    const Reading<double> reading = scalar.number(snapshot);
    switch (scalar.type) {
    case ScalarType::Double:
        buffer.number = reading.value;
        return action(&buffer.number, reading.valid);
    case ScalarType::Boolean:
        buffer.flag = reading.value != 0;
        return action(&buffer.flag, reading.valid);
    default:
        // TANGO looks at the position also of a value that is not valid.
        buffer.position = reading.valid ? Tango::DevShort(reading.value) : Tango::DevShort(0);
        return action(&buffer.position, reading.valid);
    }
}

} // namespace kora
