// One column of text, quiet tables between two rules, numbers in tabular figures. Dark where the
// reader's system is; black on white on paper.
#include "report/htmlStyle.h"

namespace survmeth::report {

const char kHtmlStyle[] = R"css(
:root {
  color-scheme: light dark;
  --page: #ffffff; --ink: #1c2733; --soft: #5a6775; --line: #d5dbe2; --rule: #1c2733;
  --faint: #f4f6f8; --accent: #1d5a85;
}
@media screen and (prefers-color-scheme: dark) {
  :root {
    --page: #14181d; --ink: #dfe5ec; --soft: #96a3b1; --line: #303943; --rule: #8793a0;
    --faint: #1c2229; --accent: #7fb6dd;
  }
}
* { box-sizing: border-box; }
html { -webkit-text-size-adjust: 100%; text-size-adjust: 100%; }
body {
  margin: 0; background: var(--page); color: var(--ink);
  font: 16px/1.55 system-ui, -apple-system, "Segoe UI", Roboto, "Helvetica Neue", Arial, sans-serif;
  overflow-wrap: anywhere;
}
main, body > footer { max-width: 62rem; margin: 0 auto; padding: 0 1.5rem; }
main { padding-top: 2.75rem; }
h1, h2, h3 { line-height: 1.25; font-weight: 600; margin: 0; text-wrap: balance; }
h1 { font-size: 1.75rem; letter-spacing: -0.01em; }
article > header h2 { font-size: 1.4rem; }
section > h2, section > h3 { font-size: 1.05rem; margin-bottom: 0.6rem; }
a { color: var(--accent); text-decoration-thickness: 1px; text-underline-offset: 0.15em; }
section, figure, .table { margin: 2.25rem 0 0; }
.source { margin: 0.35rem 0 0; color: var(--soft); font-size: 0.9rem; }
.summary { margin: 1.1rem 0 0; font-size: 1.125rem; max-width: 44rem; }

nav ol { margin: 1rem 0 0; padding-left: 1.4rem; }
nav li { padding: 0.1rem 0; }
article + article, nav + article { margin-top: 3rem; padding-top: 2.25rem; border-top: 1px solid var(--line); }

.facts { display: grid; grid-template-columns: repeat(auto-fill, minmax(9.5rem, 1fr));
  gap: 1.1rem 1.75rem; margin: 1.75rem 0 0; padding: 1.1rem 1.25rem; background: var(--faint);
  border-radius: 6px; }
.facts dt { color: var(--soft); font-size: 0.8125rem; line-height: 1.3; }
.facts dd { margin: 0.15rem 0 0; font-size: 1.0625rem; font-variant-numeric: tabular-nums; }

.scroll { overflow-x: auto; width: fit-content; max-width: 100%; }
.scroll:focus-visible { outline: 2px solid var(--accent); outline-offset: 2px; }
.long { max-height: 34rem; overflow-y: auto; border-bottom: 1px solid var(--rule); }
table { border-collapse: collapse; min-width: min(26rem, 100%); font-size: 0.9rem; line-height: 1.35;
  font-variant-numeric: tabular-nums lining-nums; overflow-wrap: normal; }
caption, .caption { text-align: left; font-weight: 600; font-size: 1.05rem; line-height: 1.35;
  margin: 0; padding: 0 0 0.55rem; }
th, td { padding: 0.34rem 0.8rem; text-align: right; vertical-align: top; white-space: nowrap; }
th:first-child, td:first-child { padding-left: 0.4rem; }
th:last-child, td:last-child { padding-right: 0.4rem; }
thead th { font-weight: 500; color: var(--soft); vertical-align: bottom; white-space: normal;
  max-width: 14rem; border-top: 1.5px solid var(--rule); border-bottom: 1px solid var(--rule); }
.long thead th { position: sticky; top: 0; background: var(--page); }
tbody th { font-weight: 400; }
tbody tr + tr > * { border-top: 1px solid var(--line); }
tbody:last-child tr:last-child > * { border-bottom: 1.5px solid var(--rule); }
tbody + tbody tr:first-child > * { border-top: 1px solid var(--rule); }
tbody .part { font-weight: 600; padding-top: 0.9rem; }
.label { text-align: left; white-space: normal; min-width: 6rem; max-width: 24rem;
  overflow-wrap: anywhere; }
.none { color: var(--soft); }
.remark, .empty { margin: 0.5rem 0 0; color: var(--soft); font-size: 0.875rem; max-width: 44rem; }

figure { break-inside: avoid; }
figure .picture { background: #ffffff; border: 1px solid var(--line); border-radius: 6px;
  padding: 0.75rem; width: fit-content; max-width: 100%; }
figure svg { display: block; max-width: 100%; height: auto; }
figcaption { margin: 0.55rem 0 0; font-size: 0.9rem; color: var(--soft); max-width: 44rem; }
figcaption strong { color: var(--ink); font-weight: 600; }

.methods, .notes { margin: 0; padding-left: 1.15rem; max-width: 46rem; font-size: 0.9375rem; }
.methods li, .notes li { padding: 0.18rem 0; }
cite { font-style: normal; color: var(--soft); }
.settings { display: grid; grid-template-columns: max-content 1fr; gap: 0.2rem 1.5rem; margin: 0;
  font-size: 0.9rem; }
.settings dt { color: var(--soft); }
.settings dd { margin: 0; }
body > footer { margin-top: 3rem; padding-top: 1.1rem; padding-bottom: 3rem; color: var(--soft);
  font-size: 0.85rem; }
body > footer p { margin: 0.4rem 0 0; padding-top: 1rem; border-top: 1px solid var(--line); }
pre { margin: 0; padding: 0.75rem 0.9rem; background: var(--faint); border-radius: 6px;
  white-space: pre-wrap; color: var(--ink); }
code, pre { font: 0.85rem/1.5 ui-monospace, SFMono-Regular, Menlo, Consolas, "DejaVu Sans Mono",
  monospace; }

@media (max-width: 40rem) {
  main, body > footer { padding-left: 1rem; padding-right: 1rem; }
  main { padding-top: 1.5rem; }
  h1 { font-size: 1.45rem; }
  .facts { grid-template-columns: repeat(auto-fill, minmax(7.5rem, 1fr)); padding: 0.9rem 1rem; }
  figure .picture { padding: 0.25rem; }
  .label { max-width: 12rem; }
}
@media print {
  @page { margin: 18mm 16mm; }
  body { font-size: 10pt; }
  main, body > footer { max-width: none; padding: 0; }
  article + article { break-before: page; border: 0; padding: 0; margin: 0; }
  h2, h3, caption, .caption { break-after: avoid; }
  .scroll, .long { overflow: visible; max-height: none; border: 0; }
  .long thead th { position: static; }
  table { font-size: 8.5pt; }
  th, td { padding: 0.2rem 0.5rem; }
  thead { display: table-header-group; }
  tr, section { break-inside: avoid; }
  section, figure, .table { margin-top: 1.5rem; }
  body > footer { margin-top: 1.5rem; padding: 0; }
  .facts, pre { background: none; border: 1px solid var(--line); }
  figure .picture { border: 0; padding: 0; }
  figure svg { max-height: 21cm; margin: 0 auto; }
  a { color: inherit; text-decoration: none; }
}
)css";

}  // namespace survmeth::report
