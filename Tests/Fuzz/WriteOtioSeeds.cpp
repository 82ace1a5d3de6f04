#include "Host/Otio/Samples.h"

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iostream>

// Writes the corpus that a run of otio_reader_fuzz begins with into a folder.
int main(int inCount, char** inArguments)
{
	if (inCount != 2)
	{
		std::cerr << "usage: write_otio_seeds FOLDER\n";
		return 2;
	}
	std::filesystem::path const folder = inArguments[1];
	std::filesystem::create_directories(folder);
	auto const corpus = SonaroHost::Otio::MakeSeedCorpus();
	for (std::size_t i = 0; i < corpus.size(); ++i)
	{
		std::ofstream(folder / ("seed" + std::to_string(i) + ".otio"), std::ios::binary) << corpus[i];
	}
	return 0;
}
