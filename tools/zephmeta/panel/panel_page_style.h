#pragma once

#include <string_view>

namespace zephmeta {

inline constexpr std::string_view kPageStyle = R"css(
:root { color-scheme: light dark; --ink: #1c1d20; --soft: #5d6169; --rule: #dcdee3; --paper: #f5f6f8; --card: #fff; --mark: #1d5fa8; }
@media (prefers-color-scheme: dark) {
  :root { --ink: #e8e9ec; --soft: #a3a7b0; --rule: #3a3d44; --paper: #17181b; --card: #212327; --mark: #8ab8ec; }
}
* { box-sizing: border-box; }
body { margin: 0; padding: 1.5rem 1rem 3rem; background: var(--paper); color: var(--ink);
  font: 1rem/1.45 system-ui, -apple-system, "Segoe UI", Roboto, "Noto Sans", sans-serif; }
main, header { max-width: 52rem; margin: 0 auto; }
header { display: flex; gap: 1.25rem; align-items: center; margin-bottom: 1.5rem; }
figure { margin: 0; flex: none; display: flex; align-items: center; justify-content: center; }
figure:has(.o5, .o6, .o7, .o8) { width: 10rem; height: 10rem; }
figure img { max-width: 10rem; max-height: 10rem; border-radius: .4rem; border: 1px solid var(--rule); image-orientation: none; }
.o2 { transform: scaleX(-1); } .o3 { transform: rotate(180deg); } .o4 { transform: scaleY(-1); }
.o5 { transform: rotate(90deg) scaleY(-1); } .o6 { transform: rotate(90deg); }
.o7 { transform: rotate(270deg) scaleY(-1); } .o8 { transform: rotate(270deg); }
header dl { font-size: .9rem; margin-top: .5rem; grid-template-columns: auto 1fr; }
header dt, header dd { border: 0; padding: .1rem 1rem .1rem 0; }
h1 { font-size: 1.35rem; margin: 0; overflow-wrap: anywhere; }
h2 { font-size: 1.1rem; margin: 0; }
h3 { font-size: .95rem; margin: 1.1rem 0 .3rem; color: var(--mark); }
article { background: var(--card); border: 1px solid var(--rule); border-radius: .6rem; padding: 1rem 1.25rem; margin-bottom: 1rem; }
.about, .empty, .note { color: var(--soft); margin: .15rem 0 .5rem; font-size: .9rem; }
dl { display: grid; grid-template-columns: minmax(9rem, 30%) 1fr; margin: 0; }
dt, dd { padding: .35rem 0; border-top: 1px solid var(--rule); margin: 0; }
dl > :first-child, dl > :first-child + dd { border-top: 0; }
dt { color: var(--soft); padding-right: 1rem; }
dd { overflow-wrap: anywhere; min-width: 0; }
dd > p { margin: 0; white-space: pre-line; }
ul { list-style: none; margin: 0; padding: 0; display: flex; flex-wrap: wrap; gap: .3rem; }
li { border: 1px solid var(--rule); border-radius: .8rem; padding: 0 .6rem; background: var(--paper); }
details { margin-top: .3rem; }
summary { color: var(--soft); cursor: pointer; font-size: .9rem; }
.bare { border-top: 1px solid var(--rule); margin-top: .8rem; padding-top: .5rem; }
.all, header:has(+ .all) { max-width: none; }
.wide { overflow-x: auto; }
table { border-collapse: collapse; width: 100%; table-layout: fixed; }
tr > :first-child { width: 14rem; }
td div div { padding-left: 1rem; }
th, td { text-align: left; vertical-align: top; padding: .35rem .75rem .35rem 0; border-top: 1px solid var(--rule); overflow-wrap: anywhere; width: 10rem; }
th { color: var(--soft); font-weight: normal; }
tr.differs th { color: var(--ink); font-weight: 600; }
dd.none { color: var(--soft); }
dd.mixed { font-style: italic; color: var(--soft); }
dd dl { border-left: 2px solid var(--rule); padding-left: .75rem; }
hr { border: 0; border-top: 1px solid var(--rule); margin: .8rem 0; }
a { color: var(--mark); }
@media (max-width: 34rem) {
  dl, header dl { grid-template-columns: 1fr; }
  dt { padding-bottom: 0; font-size: .85rem; }
  dd, dl > :first-child + dd { border-top: 0; padding-top: 0; }
  header { flex-direction: column; align-items: flex-start; }
}
@media print {
  :root { --ink: #000; --soft: #444; --rule: #bbb; --paper: #fff; --card: #fff; --mark: #000; }
  body { padding: 0; font-size: 10pt; }
  article { border: 0; padding: 0; }
  dt, dd { break-inside: avoid; }
  a { text-decoration: none; }
  .unrecorded, summary { display: none; }
  details::details-content { content-visibility: visible; }
}
)css";

}  // namespace zephmeta
