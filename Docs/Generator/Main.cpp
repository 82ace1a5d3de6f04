// Writes the documents that show what the engine does, measured on the engine itself: what comes out of
// the conversions between layouts, the gains and the power of the pan laws, and how clean the resamplers are, those of the host among them.
// Usage: generate_documents FOLDER

#include "ChannelConversions.h"
#include "PanLaws.h"
#include "ResamplerPlot.h"
#include "Resamplers.h"

#include <cstdio>
#include <fstream>
#include <string>

namespace
{

bool Write(std::string const& inPath, std::string const& inText)
{
	std::ofstream file(inPath, std::ios::binary);
	file << inText;
	file.close();
	if (!file)
	{
		std::fprintf(stderr, "cannot write %s\n", inPath.c_str());
	}
	return static_cast<bool>(file);
}

} // namespace

int main(int inCount, char** inArguments)
{
	if (inCount != 2)
	{
		std::fprintf(stderr, "usage: generate_documents FOLDER\n");
		return 2;
	}
	std::string const folder = std::string(inArguments[1]) + "/";
	bool const isWritten = Write(folder + "channel-conversions.md", SonaroDocuments::DescribeConversions()) &&
						   Write(folder + "pan-laws.svg", SonaroDocuments::DrawPanLaws()) &&
						   Write(folder + "resamplers.md", SonaroDocuments::DescribeResamplers()) &&
						   Write(folder + "resamplers.svg", SonaroDocuments::DrawResamplers());
	return isWritten ? 0 : 1;
}
