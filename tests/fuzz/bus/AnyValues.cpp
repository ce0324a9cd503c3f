#include "bus/AnyValues.h"

#include "bus/Signature.h"

namespace orvo::fuzz
{

namespace
{

constexpr std::uint8_t kLongText = 255;
constexpr std::size_t kLongTextUnit = 64;
/// Of all arrays of a message: enough for anything that is not just long.
constexpr int kElements = 4000;
/// Inside each other; the wire allows 64 containers.
constexpr int kVariants = 4;

std::size_t alignmentOf(char type)
{
    switch (type)
    {
    case 'n':
    case 'q':
        return 2;
    case 'b':
    case 'i':
    case 'u':
    case 's':
    case 'o':
    case 'a':
        return 4;
    case 'x':
    case 't':
    case 'd':
    case '(':
    case '{':
        return 8;
    default:
        return 1;
    }
}

std::string asPath(std::string_view text)
{
    std::string path;
    for (const char byte : text)
    {
        if ((byte >= 'a' && byte <= 'z') || byte == '_')
        {
            path += byte;
        }
        else if (!path.empty() && path.back() != '/')
        {
            path += '/';
        }
    }
    while (!path.empty() && path.back() == '/')
    {
        path.pop_back();
    }
    return "/" + path;
}

} // namespace

std::string AnyValues::asUtf8(std::string_view bytes)
{
    std::string text;
    for (const char byte : bytes)
    {
        const auto value = static_cast<unsigned char>(byte);
        if (value == 0)
        {
            text += '?';
        }
        else if (value < 0x80)
        {
            text += byte;
        }
        else
        {
            text += static_cast<char>(0xc0 | (value >> 6U));
            text += static_cast<char>(0x80 | (value & 0x3fU));
        }
    }
    return text;
}

void AnyValues::put(std::string_view signature)
{
    const auto types = typesOf(signature);
    for (const std::string& type : types.value_or(std::vector<std::string>()))
    {
        putType(type);
    }
}

void AnyValues::putType(std::string_view type)
{
    const std::size_t width = alignmentOf(type.front());
    switch (type.front())
    {
    case 'b':
        m_wire.number(m_input.byte() % 2, width);
        break;
    case 's':
        m_wire.text(anyText());
        break;
    case 'o':
        m_wire.text(asPath(anyText()));
        break;
    case 'g':
    {
        const std::string signature = m_input.bytes(m_input.byte());
        m_wire.signature(typesOf(signature) ? signature : "");
        break;
    }
    case 'v':
        putVariant();
        break;
    case 'a':
        putArray(type.substr(1));
        break;
    case '(':
    case '{':
        m_wire.align(width);
        put(type.substr(1, type.size() - 2));
        break;
    default:
        m_wire.number(m_input.number(width), width);
        break;
    }
}

void AnyValues::putArray(std::string_view element)
{
    const std::uint8_t count = m_input.byte();
    m_wire.number(0, 4);
    const std::size_t length = m_wire.size() - 4;
    m_wire.align(alignmentOf(element.front()));
    const std::size_t start = m_wire.size();
    for (int at = 0; at < count && m_elements < kElements; ++at)
    {
        ++m_elements;
        putType(element);
    }
    m_wire.replace(length, m_wire.size() - start, 4);
}

void AnyValues::putVariant()
{
    std::string signature = m_input.bytes(m_input.byte());
    const auto types = typesOf(signature);
    if (m_variants == kVariants || !types || types->size() != 1)
    {
        signature = "y";
    }
    m_wire.signature(signature);
    ++m_variants;
    put(signature);
    --m_variants;
}

std::string AnyValues::anyText()
{
    const std::uint8_t length = m_input.byte();
    if (length == kLongText)
    {
        const std::size_t size = kLongTextUnit * m_input.byte();
        const auto fill = static_cast<char>(m_input.byte());
        return asUtf8(std::string(size, fill));
    }
    return asUtf8(m_input.bytes(length));
}

} // namespace orvo::fuzz
