#pragma once

namespace orvo::ctl
{

/// How the picture looks. The colours of the bars differ in lightness, too, and hold in both
/// themes; viewers without the theme rule show the light one.
inline constexpr char kSvgStyle[] =
    "text{font-family:'DejaVu Sans','Segoe UI',Roboto,Helvetica,Arial,sans-serif;"
    "font-size:12px;fill:#1c2126}"
    "rect{shape-rendering:crispEdges}"
    ".page{fill:#ffffff}"
    ".track{fill:#f0f2f4}"
    ".title{font-size:20px;font-weight:bold}"
    ".name{font-size:14px;font-weight:bold}"
    ".quiet{fill:#5a646d}"
    ".grid{stroke:#d5dade;stroke-width:1}"
    ".leader{stroke:#5a646d;stroke-width:1}"
    ".mark{fill:#1c2126}"
    ".script{fill:#1c2126;fill-opacity:0.35}"
    ".up{fill:#00795a}"
    ".starting{fill:#f0c33c}"
    ".down{fill:#c2410c}"
    ".rebooting{fill:#86198f}"
    ".unknown{fill:url(#unknown)}"
    ".hatch{stroke:#9aa5ae;stroke-width:1.5}"
    ".in{fill:#ffffff}"
    ".in-starting{fill:#1c2126}"
    ".in-unknown{fill:#5a646d}"
    "@media (prefers-color-scheme:dark){"
    "text{fill:#e8ebee}"
    ".page{fill:#14181c}"
    ".track{fill:#20262c}"
    ".quiet,.in-unknown{fill:#a3adb6}"
    ".grid{stroke:#343c44}"
    ".leader{stroke:#a3adb6}"
    ".mark{fill:#e8ebee}"
    ".hatch{stroke:#58636d}"
    ".in{fill:#ffffff}"
    ".in-starting{fill:#1c2126}"
    "}";

} // namespace orvo::ctl
