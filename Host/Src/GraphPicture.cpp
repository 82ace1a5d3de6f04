#include "SonaroHost/GraphDrawing.h"
#include "SonaroHost/HostError.h"

#include <graphviz/gvc.h>

#include <memory>

namespace SonaroHost
{

namespace
{

[[noreturn]] void Refuse(char const* inReason)
{
	throw HostError(HostError::Kind::eOutput,
		std::string("the graph cannot be drawn: ") + inReason + "; a drawing in .dot needs no Graphviz");
}

struct ContextFree
{
	void operator()(GVC_t* inContext) const { gvFreeContext(inContext); }
};
struct GraphFree
{
	void operator()(Agraph_t* inGraph) const { agclose(inGraph); }
};
struct RenderFree
{
	void operator()(char* inData) const { gvFreeRenderData(inData); }
};

} // namespace

std::string DrawGraph(std::string const& inDot, GraphFormat inFormat)
{
	if (inFormat == GraphFormat::eDot)
	{
		return inDot;
	}
	std::unique_ptr<GVC_t, ContextFree> const context(gvContext());
	std::unique_ptr<Agraph_t, GraphFree> const graph(agmemread(inDot.c_str()));
	if (!context || !graph)
	{
		Refuse("Graphviz does not take it");
	}
	if (gvLayout(context.get(), graph.get(), "dot") != 0)
	{
		Refuse("Graphviz cannot lay it out; install the package graphviz");
	}
	char* data = nullptr;
	unsigned size = 0;
	int const result =
		gvRenderData(context.get(), graph.get(), inFormat == GraphFormat::eSvg ? "svg" : "png", &data, &size);
	std::unique_ptr<char, RenderFree> const owned(data);
	gvFreeLayout(context.get(), graph.get());
	if (result != 0 || !data)
	{
		Refuse("Graphviz cannot render it; install the package graphviz");
	}
	return {data, size};
}

} // namespace SonaroHost
