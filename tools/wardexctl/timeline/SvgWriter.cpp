#include "timeline/SvgWriter.h"

namespace orvo::ctl
{

void SvgWriter::rectangle(double x, double y, double width, double height, const char* style,
                          const std::string& title)
{
    m_xml.writeStartElement("rect");
    attribute("x", x);
    attribute("y", y);
    attribute("width", width);
    attribute("height", height);
    m_xml.writeAttribute("class", style);
    this->title(title);
    m_xml.writeEndElement();
}

void SvgWriter::line(double x1, double y1, double x2, double y2, const char* style)
{
    m_xml.writeEmptyElement("line");
    attribute("x1", x1);
    attribute("y1", y1);
    attribute("x2", x2);
    attribute("y2", y2);
    m_xml.writeAttribute("class", style);
}

void SvgWriter::text(double x, double y, const std::string& text, const char* style, Anchor anchor)
{
    m_xml.writeStartElement("text");
    attribute("x", x);
    attribute("y", y);
    m_xml.writeAttribute("class", style);
    if (anchor != Anchor::Start)
    {
        m_xml.writeAttribute("text-anchor", anchor == Anchor::End ? "end" : "middle");
    }
    m_xml.writeCharacters(QString::fromStdString(text));
    m_xml.writeEndElement();
}

void SvgWriter::polygon(const std::string& points, const char* style, const std::string& title)
{
    m_xml.writeStartElement("polygon");
    m_xml.writeAttribute("points", QString::fromStdString(points));
    m_xml.writeAttribute("class", style);
    this->title(title);
    m_xml.writeEndElement();
}

void SvgWriter::attribute(const char* name, double value)
{
    // Hundredths of a pixel, without the zeros behind.
    QString text = QString::number(value, 'f', 2);
    while (text.endsWith('0'))
    {
        text.chop(1);
    }
    if (text.endsWith('.'))
    {
        text.chop(1);
    }
    m_xml.writeAttribute(name, text);
}

void SvgWriter::title(const std::string& title)
{
    if (!title.empty())
    {
        m_xml.writeTextElement("title", QString::fromStdString(title));
    }
}

} // namespace orvo::ctl
