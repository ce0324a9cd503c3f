#pragma once

#include <QXmlStreamWriter>

#include <string>

namespace orvo::ctl
{

/// Where a text stands from its x on.
enum class Anchor
{
    Start,
    Middle,
    End
};

/// The few shapes that a picture needs, in pixels of the picture.
///
/// Borrows: the writer.
class SvgWriter
{
public:
    explicit SvgWriter(QXmlStreamWriter& xml) : m_xml(xml) {}

    void rectangle(double x, double y, double width, double height, const char* style,
                   const std::string& title = "");
    void line(double x1, double y1, double x2, double y2, const char* style);
    void text(double x, double y, const std::string& text, const char* style,
              Anchor anchor = Anchor::Start);
    /// points: as in the attribute of a polygon.
    void polygon(const std::string& points, const char* style, const std::string& title);

private:
    void attribute(const char* name, double value);
    void title(const std::string& title);

    QXmlStreamWriter& m_xml;
};

} // namespace orvo::ctl
