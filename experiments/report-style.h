#pragma once

/// The style sheet of the report. It holds no character that XML reads as markup.
constexpr const char* kReportStyle = R"(
:root { color-scheme: light dark; --page: #ffffff; --text: #1b1b1b; --soft: #5a5a5a; --line: #c4c4c4;
  --stripe: #f3f3f3; --good: #1a7f37; --bad: #c42b1c; --link: #0b57a4; }
@media screen and (prefers-color-scheme: dark) {
  :root { --page: #161616; --text: #ececec; --soft: #b0b0b0; --line: #4d4d4d; --stripe: #222222; --good: #4cc06a;
    --bad: #ff6f61; --link: #82b8f5; }
}
* { box-sizing: border-box; }
body { margin: 0 auto; max-width: 78rem; padding: 1rem; background: var(--page); color: var(--text);
  font: 1rem/1.5 system-ui, sans-serif; overflow-wrap: anywhere; }
h1, h2, h3, h4 { line-height: 1.2; margin: 1.6em 0 0.5em; }
h1 { margin-top: 0; }
h2 { border-bottom: 1px solid var(--line); padding-bottom: 0.2em; }
a { color: var(--link); }
nav ul { display: flex; flex-wrap: wrap; gap: 0.2rem 1.2rem; padding: 0; list-style: none; }
p, figcaption { max-width: 48rem; }
.wide { overflow-x: auto; margin: 0.5rem 0 1rem; }
table { border-collapse: collapse; min-width: min(100%, 24rem); font-variant-numeric: tabular-nums; }
caption { text-align: left; color: var(--soft); padding-bottom: 0.3rem; }
th, td { padding: 0.25rem 0.7rem; border-bottom: 1px solid var(--line); text-align: right; overflow-wrap: normal;
  vertical-align: top; }
th { min-width: 4rem; max-width: 16rem; overflow-wrap: anywhere; }
th[scope="row"], thead th:first-child { text-align: left; }
th[scope="row"] { font-weight: normal; min-width: 8rem; }
tbody tr:nth-child(even) { background: var(--stripe); }
.interval { color: var(--soft); white-space: nowrap; }
.bars { display: grid; grid-template-columns: repeat(auto-fill, minmax(min(100%, 22rem), 1fr)); gap: 0 2.5rem; }
.bars h4 { margin: 1rem 0 0.2rem; font-size: 1rem; }
.bars ul { margin: 0; padding: 0; list-style: none; }
.bars li { display: grid; grid-template-columns: minmax(4rem, 7rem) 1fr 3.2rem; gap: 0.6rem; align-items: center;
  font-size: 0.9rem; break-inside: avoid; }
.bars svg { width: 100%; height: 1.3rem; }
.bars .name { line-height: 1.2; }
.bars .value { text-align: right; font-variant-numeric: tabular-nums; }
.scale { fill: var(--stripe); stroke: var(--line); }
.whisker { stroke: var(--text); stroke-width: 2; }
figure { margin: 0; }
svg.curves { display: block; width: 100%; max-width: 44rem; color: var(--text); }
.strip { border-top: 1px solid var(--line); padding: 0.6rem 0; break-inside: avoid; }
.strip p { margin: 0 0 0.3rem; }
.row { display: flex; flex-wrap: wrap; gap: 0.5rem; margin: 0; padding: 0; list-style: none; }
.row figure { width: 7rem; }
.frame { display: flex; align-items: center; justify-content: center; height: 6.9rem; border: 4px solid var(--line);
  background: var(--stripe); overflow: hidden; }
.frame img { display: block; max-width: 100%; max-height: 100%; }
.query .frame { border-color: var(--text); }
.yes .frame { border-color: var(--good); }
.no .frame { border-color: var(--bad); border-style: dashed; }
.missing { font-size: 0.75rem; color: var(--soft); padding: 0.3rem; text-align: center; }
.row figcaption { font-size: 0.8rem; line-height: 1.3; font-variant-numeric: tabular-nums; }
.mark { font-weight: bold; }
.yes .mark { color: var(--good); }
.no .mark { color: var(--bad); }
.file { display: block; white-space: nowrap; overflow: hidden; text-overflow: ellipsis; color: var(--soft); }
.strip .shares { margin: 0.4rem 0 0; font-size: 0.9rem; }
.words { overflow-wrap: normal; }
.row .segments { width: 11rem; break-inside: avoid; }
.segments svg { display: block; width: 100%; height: auto; max-height: 16rem; }
.cells-under { fill: none; stroke: #000000; stroke-opacity: 0.4; stroke-width: 2.5; }
.cells { fill: none; stroke: #ffffff; stroke-opacity: 0.8; stroke-width: 1; }
.found-under { fill: none; stroke: #000000; stroke-width: 6; stroke-linecap: round; }
.found { fill: none; stroke: #5df28a; stroke-width: 3.5; stroke-linecap: round; }
.cells-under, .cells, .found-under, .found { vector-effect: non-scaling-stroke; }
.unseen { position: absolute; width: 1px; height: 1px; overflow: hidden; clip-path: inset(50%); white-space: nowrap; }
@media (max-width: 30rem) {
  body { padding: 0.7rem; }
  th, td { padding: 0.25rem 0.4rem; font-size: 0.9rem; }
  .row { display: grid; grid-template-columns: repeat(3, minmax(0, 1fr)); }
  .row figure { width: auto; }
}
@media print {
  body { max-width: none; padding: 0; font-size: 10pt; }
  nav { display: none; }
  .wide { overflow: visible; }
  h2, h3, h4 { break-after: avoid; }
  tr, .bars li, svg.curves { break-inside: avoid; }
  .bars { grid-template-columns: 1fr 1fr; }
  .row { display: flex; gap: 0.25rem; }
  .row figure { width: 4.6rem; }
  .frame { height: 4.6rem; border-width: 3px; }
  .row figcaption { font-size: 7pt; }
  * { print-color-adjust: exact; }
}
)";
