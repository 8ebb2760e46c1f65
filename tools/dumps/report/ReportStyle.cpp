#include "dumps/report/ReportStyle.h"

namespace dumps {

const std::string_view REPORT_STYLE = R"(
:root { color-scheme: light dark; --page: #f4f5f7; --card: #fff; --ink: #15181d; --soft: #5d6673;
  --rule: #e3e6ea; --blue: #0a6fd8; --faint: #9cc6f2; --orange: #e8630a; --pass: #0a6fd8; --odd: #6fb1f3; }
@media (prefers-color-scheme: dark) { :root { --page: #0f1216; --card: #181c22; --ink: #e7eaee;
  --soft: #98a2af; --rule: #2a3038; --blue: #4aa5ff; --faint: #2b5380; --orange: #ff8a3d; --pass: #3d93ea;
  --odd: #225d9b; } }
* { box-sizing: border-box; }
body { margin: 0; background: var(--page); color: var(--ink); font: 15px/1.5 system-ui, "Segoe UI", Roboto,
  "Helvetica Neue", Arial, sans-serif; }
main { max-width: 1140px; margin: 0 auto; padding: 32px 20px 48px; }
h1 { font-size: 26px; line-height: 1.2; margin: 0; letter-spacing: -0.01em; }
h2 { font-size: 16px; margin: 0 0 2px; }
h3 { font-size: 14px; margin: 0; font-weight: 600; }
p { margin: 0; }
.lead { color: var(--soft); margin: 6px 0 0; overflow-wrap: anywhere; }
.note { color: var(--soft); font-size: 13px; margin: 0 0 10px; }
.warning { border-left: 3px solid var(--orange); padding: 6px 12px; margin: 16px 0 0; background: var(--card); }
.card { background: var(--card); border: 1px solid var(--rule); border-radius: 10px; padding: 18px 20px;
  margin: 16px 0 0; min-width: 0; }
.tiles { display: grid; grid-template-columns: repeat(4, 1fr); gap: 12px; margin: 20px 0 0; }
.tile { background: var(--card); border: 1px solid var(--rule); border-radius: 10px; padding: 12px 16px; }
.tile b { display: block; font-size: 25px; line-height: 1.25; font-weight: 650; letter-spacing: -0.01em;
  font-variant-numeric: tabular-nums; }
.tile b small { font-size: 14px; font-weight: 500; color: var(--soft); letter-spacing: 0; }
.tile span { color: var(--soft); font-size: 13px; }
.pair { display: grid; grid-template-columns: 1fr 1fr; gap: 16px; }
.pair > .card { margin-bottom: 0; }
.values { display: grid; grid-template-columns: 1fr 1fr; gap: 18px 28px; margin-top: 14px; }
.values > div { min-width: 0; }
.values p { color: var(--soft); font-size: 13px; font-variant-numeric: tabular-nums; }
table { border-collapse: collapse; width: 100%; font-variant-numeric: tabular-nums; font-size: 14px; }
th, td { text-align: right; padding: 4px 0 4px 14px; border-bottom: 1px solid var(--rule); white-space: nowrap; }
th { color: var(--soft); font-weight: 500; font-size: 13px; }
tr:last-child td { border-bottom: 0; }
th:first-child, td:first-child { padding-left: 0; }
.names td:first-child { text-align: left; }
.frame { margin-top: 18px; }
.frame p { color: var(--soft); font-size: 13px; margin-bottom: 4px; font-variant-numeric: tabular-nums; }
details { margin-top: 4px; }
summary { cursor: pointer; color: var(--soft); font-size: 13px; }
details table { width: auto; min-width: 360px; margin: 4px 0 0; }
ul { margin: 6px 0 0; padding-left: 18px; color: var(--soft); font-size: 14px; }
svg { display: block; width: 100%; height: auto; overflow: visible; }
svg.passes { height: 22px; border-radius: 4px; overflow: hidden; background: var(--rule); }
svg text { font: 11px system-ui, "Segoe UI", Roboto, Arial, sans-serif; fill: var(--soft);
  font-variant-numeric: tabular-nums; }
.grid { stroke: var(--rule); stroke-width: 1; }
.axis { stroke: var(--soft); stroke-width: 1; }
.reference { stroke: var(--soft); stroke-width: 1; stroke-dasharray: 3 4; }
.line { fill: none; stroke: var(--blue); stroke-width: 1.5; stroke-linejoin: round; }
.faint { stroke: var(--faint); stroke-width: 1; }
.mean { stroke: var(--blue); stroke-width: 2; }
.mark { fill: var(--orange); }
.bar { fill: var(--blue); }
.beyond { fill: var(--orange); }
.pass { fill: var(--pass); }
.odd { fill: var(--odd); }
@media (max-width: 760px) { .tiles { grid-template-columns: 1fr 1fr; } .pair, .values { grid-template-columns: 1fr; }
  .card { padding: 14px; overflow-x: auto; } .wide svg { min-width: 720px; } }
@media print { body { background: #fff; } .card, .tile { break-inside: avoid; } }
)";

}  // namespace dumps
