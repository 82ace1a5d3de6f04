#include "PageStyle.h"

#include "SonaroHost/Metering/LoudnessPlot.h"

namespace SonaroCommand::Page
{

std::string GetPageStyle()
{
	return SonaroHost::GetPlotColours() +
		   "*{box-sizing:border-box}\n"
		   "body{margin:0 auto;padding:1.5rem;max-width:72rem;background:var(--paper);color:var(--ink);"
		   "font:1rem/1.5 system-ui,sans-serif}\n"
		   "h1{font-size:1.6rem;line-height:1.25;margin:0 0 .25rem;overflow-wrap:anywhere}\n"
		   "h2{font-size:1.2rem;margin:2.25rem 0 .5rem;padding-top:.75rem;border-top:1px solid var(--line)}\n"
		   "p{margin:.4rem 0;overflow-wrap:anywhere}\n"
		   "a{color:var(--short-term)}\n"
		   ".lead,caption,figcaption{color:var(--soft)}\n"
		   ".warning{border-left:.3rem solid var(--integrated);padding:.1rem .75rem;margin:1rem 0}\n"
		   "nav ul{display:flex;flex-wrap:wrap;gap:.25rem 1.25rem;list-style:none;margin:1rem 0;padding:0}\n"
		   "dl{display:grid;grid-template-columns:max-content 1fr;gap:.25rem 1.5rem;margin:.5rem 0}\n"
		   "dt{color:var(--soft)}\ndd{margin:0;overflow-wrap:anywhere}\n"
		   ".scroll{overflow-x:auto;margin:.5rem 0}\n"
		   "a:focus-visible,.scroll:focus-visible{outline:2px solid var(--short-term);outline-offset:2px}\n"
		   "table{border-collapse:collapse;width:100%;font-variant-numeric:tabular-nums}\n"
		   "caption{text-align:left;padding-bottom:.25rem}\n"
		   "th,td{text-align:left;vertical-align:top;padding:.3rem 1rem .3rem 0;"
		   "border-bottom:1px solid var(--line)}\n"
		   "thead th{color:var(--soft);font-weight:600;white-space:nowrap}\n"
		   "tbody th{font-weight:600}\n"
		   "tbody th,tbody td:last-child{min-width:9rem;overflow-wrap:anywhere}\n"
		   ".number{text-align:right;white-space:nowrap}\n"
		   "figure{margin:.75rem 0}\n"
		   "figure svg{display:block;width:100%;height:auto}\n"
		   ".paper{background:#ffffff;border:1px solid var(--line);border-radius:.25rem;padding:.5rem;"
		   "overflow-x:auto}\n"
		   ".plots{display:grid;grid-template-columns:repeat(auto-fill,minmax(min(100%,30rem),1fr));"
		   "gap:0 1.5rem}\n"
		   "@media (max-width:40rem){body{padding:1rem}dl{grid-template-columns:1fr;gap:0}"
		   "dd{margin-bottom:.5rem}figure svg{min-width:44rem}.plots "
		   "svg{min-width:28rem}figure{overflow-x:auto}}\n"
		   "@media print{body{max-width:none;padding:0;font-size:10pt}nav{display:none}"
		   "figure,tr,.warning{break-inside:avoid}h2{break-after:avoid}.scroll,.paper{overflow:visible}}\n" +
		   SonaroHost::GetPlotStyle();
}

} // namespace SonaroCommand::Page
