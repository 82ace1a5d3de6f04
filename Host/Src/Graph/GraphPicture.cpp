#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Graph/GraphDrawing.h"

#include <graphviz/gvc.h>

#include <cmath>
#include <memory>
#include <string>

namespace SonaroHost
{

namespace
{

[[noreturn]] void RefuseToDraw(std::string const& inReason)
{
	RefuseOutput("the graph cannot be drawn: " + inReason + "; write .dot instead, which needs no Graphviz");
}

struct ContextFree
{
	void operator()(GVC_t* inContext) const { gvFreeContext(inContext); }
};
struct GraphFree
{
	void operator()(Agraph_t* inGraph) const { agclose(inGraph); }
};
struct LayoutFree
{
	void operator()(Agraph_t* inGraph) const { gvFreeLayout(mContext, inGraph); }

	GVC_t* mContext;
};
struct RenderFree
{
	void operator()(char* inData) const { gvFreeRenderData(inData); }
};

// Refuses what is too large: Graphviz would make a smaller picture of it, in which nothing can be read.
void CheckBitmap(Agraph_t* inGraph)
{
	constexpr double kPointsPerInch = 72.0;
	constexpr double kPixelsPerInch = 96.0;
	// The pixels on a side, and of the whole: 1 GiB of memory.
	constexpr double kMostPixels = 32767.0;
	constexpr double kMostArea = 268435456.0;
	boxf const box = GD_bb(inGraph);
	double const width = std::ceil((box.UR.x - box.LL.x) * kPixelsPerInch / kPointsPerInch);
	double const height = std::ceil((box.UR.y - box.LL.y) * kPixelsPerInch / kPointsPerInch);
	if (width > kMostPixels || height > kMostPixels || width * height > kMostArea)
	{
		RefuseOutput("the graph would be " + std::to_string(static_cast<long long>(width)) + " x " +
					 std::to_string(static_cast<long long>(height)) +
					 " pixels, which is too large for a bitmap; draw it as .svg");
	}
}

} // namespace

std::string DrawGraph(std::string const& inDot, GraphFormat inFormat)
{
	if (inFormat == GraphFormat::kDot)
	{
		return inDot;
	}
	std::unique_ptr<GVC_t, ContextFree> const context(gvContext());
	std::unique_ptr<Agraph_t, GraphFree> const graph(agmemread(inDot.c_str()));
	if (!context || !graph)
	{
		RefuseToDraw("Graphviz does not accept it");
	}
	if (gvLayout(context.get(), graph.get(), "dot") != 0)
	{
		RefuseToDraw("Graphviz cannot lay it out; install the package graphviz");
	}
	std::unique_ptr<Agraph_t, LayoutFree> const layout(graph.get(), {context.get()});
	if (inFormat == GraphFormat::kPng)
	{
		CheckBitmap(graph.get());
	}
	char* data = nullptr;
	unsigned size = 0;
	int const result =
		gvRenderData(context.get(), graph.get(), inFormat == GraphFormat::kSvg ? "svg" : "png", &data, &size);
	std::unique_ptr<char, RenderFree> const owned(data);
	if (result != 0 || !data)
	{
		RefuseToDraw("Graphviz cannot render it; install the package graphviz");
	}
	return {data, size};
}

} // namespace SonaroHost
