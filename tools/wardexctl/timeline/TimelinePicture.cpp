#include "timeline/TimelinePicture.h"

#include "timeline/PictureGrid.h"
#include "timeline/PictureLane.h"
#include "timeline/SvgStyle.h"
#include "timeline/SvgWriter.h"
#include "timeline/TimeScale.h"

#include <QXmlStreamWriter>

#include <array>
#include <set>

namespace orvo::ctl
{

namespace
{

constexpr char kSvgNamespace[] = "http://www.w3.org/2000/svg";
constexpr std::array<Health, kHealths> kHealthOrder = {Health::Up, Health::Starting, Health::Down,
                                                       Health::Rebooting, Health::Unknown};
constexpr double kLine = 20;
/// So many parts of the axis leave room for their labels.
constexpr int kWallParts = 10;

class Picture
{
public:
    Picture(const TimelineView& view, QXmlStreamWriter& xml)
        : m_view(view), m_grid{view.timeline}, m_xml(xml), m_svg(xml), m_remarks(remarksOf(view))
    {
        for (const TimelineLane& lane : view.timeline.lanes)
        {
            m_lanes.emplace_back(view, lane);
            m_lanesHeight += m_lanes.back().height();
        }
    }

    void draw()
    {
        const double bottom = PictureGrid::kAxis + PictureGrid::kLaneGap + m_lanesHeight;
        const double remarks = static_cast<double>(m_remarks.size()) * kLine;
        begin(bottom + 4 * kLine + remarks + PictureGrid::kMargin);
        m_svg.text(PictureGrid::kMargin, 38, headlineOf(m_view.timeline), "title");
        m_svg.text(PictureGrid::kMargin, 60, subtitle(), "quiet");
        drawAxes(bottom);
        double y = PictureGrid::kAxis + PictureGrid::kLaneGap;
        for (const PictureLane& lane : m_lanes)
        {
            lane.draw(m_svg, y);
            y += lane.height();
        }
        drawLegend(bottom + 3 * kLine);
        for (std::size_t index = 0; index < m_remarks.size(); ++index)
        {
            m_svg.text(PictureGrid::kMargin, bottom + (5 + static_cast<double>(index)) * kLine,
                       m_remarks[index], "quiet");
        }
        m_xml.writeEndElement();
    }

private:
    void begin(double height)
    {
        const QString size = QString::number(height, 'f', 0);
        const QString width = QString::number(PictureGrid::kWidth, 'f', 0);
        m_xml.writeStartElement("svg");
        m_xml.writeDefaultNamespace(kSvgNamespace);
        m_xml.writeAttribute("viewBox", "0 0 " + width + " " + size);
        m_xml.writeAttribute("width", width);
        m_xml.writeAttribute("height", size);
        m_xml.writeAttribute("role", "img");
        m_xml.writeTextElement("title", QString::fromStdString(headlineOf(m_view.timeline)));
        m_xml.writeTextElement("style", kSvgStyle);
        m_xml.writeStartElement("defs");
        m_xml.writeStartElement("pattern");
        m_xml.writeAttribute("id", "unknown");
        m_xml.writeAttribute("width", "6");
        m_xml.writeAttribute("height", "6");
        m_xml.writeAttribute("patternUnits", "userSpaceOnUse");
        m_xml.writeAttribute("patternTransform", "rotate(45)");
        m_svg.line(0, 0, 0, 6, "hatch");
        m_xml.writeEndElement();
        m_xml.writeEndElement();
        m_svg.rectangle(0, 0, PictureGrid::kWidth, height, "page");
    }

    [[nodiscard]] std::string subtitle() const
    {
        const std::string day = m_view.clock.isoText(m_view.timeline.end).substr(0, 10);
        return (m_view.wallStep ? "" : day + ", ") + m_view.rangeText() + modeText(m_view.timeline);
    }

    void drawAxes(double bottom)
    {
        const Timeline& timeline = m_view.timeline;
        if (!m_view.wallStep)
        {
            for (const Tick& tick :
                 wallTicks(timeline.begin, timeline.end, m_view.clock, kWallParts))
            {
                const double x = m_grid.xOf(tick.time);
                m_svg.line(x, PictureGrid::kAxis - 6, x, bottom, "grid");
                m_svg.text(x, PictureGrid::kAxis - 12, tick.label, "quiet", Anchor::Middle);
            }
        }
        m_svg.line(PictureGrid::kLeft, bottom, PictureGrid::kRight, bottom, "leader");
        for (const Tick& tick : ageTicks(timeline.begin, timeline.end, kWallParts))
        {
            const double x = m_grid.xOf(tick.time);
            m_svg.line(x, bottom, x, bottom + 5, "leader");
            m_svg.text(x, bottom + 18, tick.label, "quiet", Anchor::Middle);
        }
        m_svg.text(PictureGrid::kMargin, bottom + 18, "ago", "quiet");
    }

    void drawLegend(double y)
    {
        double x = PictureGrid::kLeft;
        bool isMixed = false;
        std::set<Health> healths;
        std::set<TimelineAction::Kind> kinds;
        for (const PictureLane& lane : m_lanes)
        {
            for (const LaneCell& cell : lane.cells())
            {
                isMixed = isMixed || lane.isColumn(cell);
                for (const Health health : kHealthOrder)
                {
                    if (cell.secondsOf(health) > 0 && lane.isSeen(cell))
                    {
                        healths.insert(health);
                    }
                }
            }
        }
        for (const TimelineAction& action : m_view.timeline.actions)
        {
            if (kinds.insert(action.kind).second)
            {
                m_firsts.push_back(&action);
            }
        }
        for (const Health health : kHealthOrder)
        {
            if (healths.count(health) == 0)
            {
                continue;
            }
            m_svg.rectangle(x, y - 11, 18, 13, styleOf(health));
            legendText(x, y, 24, legendWord(health));
        }
        if (isMixed)
        {
            m_svg.text(x, y, "stacked: shares of a time with many changes", "quiet");
        }
        x = PictureGrid::kLeft;
        y += kLine;
        for (const TimelineAction* action : m_firsts)
        {
            m_svg.polygon(actionSign(action->kind, x + 6, y - 11), "mark", "");
            legendText(x, y, 17, actionLabel(*action));
        }
    }

    void legendText(double& x, double y, double offset, const std::string& word)
    {
        m_svg.text(x + offset, y, word, "quiet");
        x += offset + static_cast<double>(word.size()) * PictureGrid::kText + 16;
    }

    static std::string legendWord(Health health)
    {
        const std::string service = healthText(health, false);
        const std::string device = healthText(health, true);
        return service == device ? service : device + " / " + service;
    }

    const TimelineView& m_view;
    PictureGrid m_grid;
    QXmlStreamWriter& m_xml;
    SvgWriter m_svg;
    std::vector<std::string> m_remarks;
    std::vector<PictureLane> m_lanes;
    std::vector<const TimelineAction*> m_firsts;
    double m_lanesHeight{0};
};

} // namespace

QByteArray timelineSvg(const TimelineView& view)
{
    QByteArray bytes;
    QXmlStreamWriter xml(&bytes);
    xml.writeStartDocument();
    Picture(view, xml).draw();
    xml.writeEndDocument();
    return bytes;
}

QByteArray timelineHtml(const TimelineView& view)
{
    QByteArray bytes;
    QXmlStreamWriter xml(&bytes);
    xml.writeDTD("<!DOCTYPE html>\n");
    xml.writeStartElement("html");
    xml.writeAttribute("lang", "en");
    xml.writeStartElement("head");
    xml.writeEmptyElement("meta");
    xml.writeAttribute("charset", "utf-8");
    xml.writeEmptyElement("meta");
    xml.writeAttribute("name", "color-scheme");
    xml.writeAttribute("content", "light dark");
    xml.writeTextElement("title", QString::fromStdString("wardex: " + headlineOf(view.timeline)));
    xml.writeTextElement("style", "body{margin:0}svg{max-width:100%;height:auto;display:block}");
    xml.writeEndElement();
    xml.writeStartElement("body");
    Picture(view, xml).draw();
    xml.writeEndElement();
    xml.writeEndDocument();
    return bytes;
}

} // namespace orvo::ctl
