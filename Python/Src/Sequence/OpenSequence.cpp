#include "OpenSequence.h"

#include "SonaroHost/Engine/RenderContextScope.h"
#include "SonaroHost/Sequence/SequenceGraph.h"

#include <set>
#include <utility>

namespace SonaroPython
{

namespace
{

using namespace SonaroHost;

// Far longer than any sequence.
constexpr double kSequenceWarmUp = 1e7;
constexpr unsigned kCheckedBlockFrames = 4096;

// What graphs read: files of their own, and what they share with all others.
class SequenceGraphMedia final : public GraphMedia
{
public:
	// inFiles: those of one graph, or all.
	SequenceGraphMedia(std::shared_ptr<GraphMedia const> inFiles, std::shared_ptr<MediaFailures> inFailures)
		: mFiles(std::move(inFiles)),
		  mFailures(std::move(inFailures))
	{
	}

	std::optional<HostError> FindFailure() const override
	{
		auto failure = mFailures->Find();
		return failure ? failure : mFiles->FindFailure();
	}
	std::vector<DamagedMedia> ListDamaged() const override { return mFiles->ListDamaged(); }

private:
	std::shared_ptr<GraphMedia const> mFiles;
	std::shared_ptr<MediaFailures> mFailures;
};

Programme MakeProgramme(std::shared_ptr<Sequence::Description const> inDescription, int inSampleRate,
	std::optional<std::int64_t> const& inFrames, SequenceMedia const& inMedia)
{
	Programme programme;
	programme.mDescription = std::move(inDescription);
	programme.mSampleRate = inSampleRate;
	programme.mFrames =
		inFrames.value_or(Sequence::GetLength(*programme.mDescription).ToFrame64(programme.GetFrameRate()));
	programme.mMedia = std::make_shared<SequenceGraphMedia>(inMedia.mFiles, inMedia.mFailures);
	programme.mOpenForGraph = [files = inMedia.mFiles, failures = inMedia.mFailures]
	{ return std::make_unique<SequenceGraphMedia>(files->OpenForGraph(), failures); };
	return programme;
}

// What contradicts itself is found by whoever opens it.
Programme Check(Programme inProgramme)
{
	RenderContextScope const context(
		ChooseBlock(inProgramme, kCheckedBlockFrames), SN::kTimeMax, SN::ImmutableString("check"));
	auto const media = inProgramme.mOpenForGraph();
	MakeGraph(inProgramme, context.Get());
	return inProgramme;
}

} // namespace

OpenSequence::OpenSequence(std::shared_ptr<Sequence::Description const> inDescription, int inSampleRate,
	std::optional<std::int64_t> const& inFrames, SequenceMedia const& inMedia, unsigned inReaders)
	: mFailures(inMedia.mFailures),
	  mProgramme{
		  Check(MakeProgramme(std::move(inDescription), inSampleRate, inFrames, inMedia)), inMedia.mPaths},
	  mReader(mProgramme.mProgramme, inReaders, kSequenceWarmUp)
{
}

void OpenSequence::Read(std::int64_t inFirst, std::int64_t inFrames, unsigned inTrack,
	std::span<float* const> outChannels, std::function<void()> const& inAfterBlock)
{
	std::set<std::string> leftOut;
	auto const& tracks = mProgramme.mProgramme.mDescription->mTracks;
	for (std::size_t track = 0; inTrack != 0 && track < tracks.size(); ++track)
	{
		if (track + 1 != inTrack)
		{
			leftOut.insert(tracks[track].mOrigin);
		}
	}
	mReader.Read(leftOut, {inFirst, inFrames}, outChannels, inAfterBlock);
}

} // namespace SonaroPython
