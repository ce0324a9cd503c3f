#pragma once

#include "bus/InputReader.h"
#include "bus/WireWriter.h"

#include <string>
#include <string_view>

namespace orvo::fuzz
{

/// Makes the values of a signature out of an input, any of them valid on the wire: a bus lets
/// nothing else through, and ends the connection of who sends it.
///
/// Shape:  numbers as they are; a text is its length and bytes, or 255, a count of 64 bytes and
///         the byte that fills them; an array is its length and elements; a variant is the length
///         of its signature, the signature and the value.
class AnyValues
{
public:
    AnyValues(InputReader& input, WireWriter& wire) : m_input(input), m_wire(wire) {}

    void put(std::string_view signature);

    /// Text as a service may send it: each byte that is not ASCII as the letter that it stands for
    /// in Latin-1.
    static std::string asUtf8(std::string_view bytes);

private:
    void putType(std::string_view type);
    void putArray(std::string_view element);
    void putVariant();
    std::string anyText();

    InputReader& m_input;
    WireWriter& m_wire;
    int m_elements{0};
    int m_variants{0};
};

} // namespace orvo::fuzz
