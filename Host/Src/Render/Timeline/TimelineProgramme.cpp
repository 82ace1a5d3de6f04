#include "SonaroHost/Render/TimelineProgramme.h"

#include "SonaroHost/Engine/RenderContextScope.h"

namespace SonaroHost::Otio
{

namespace
{

// The block size that is checked. The longer blocks are, the less may clips be sped up; longer ones are not rendered
// unless somebody asks for them.
constexpr unsigned kBlockFrames = 4096;

} // namespace

Programme MakeProgramme(TimelineSequence const& inSequence, FileMedia const& inMedia)
{
	return {inSequence.mDescription, inSequence.mSampleRate, inSequence.mFirstFrame, inSequence.mFrames,
		inSequence.mFile, std::shared_ptr<GraphMedia const>(std::shared_ptr<void>(), &inMedia),
		[&inMedia] { return inMedia.OpenForGraph(); }};
}

void CheckCanRender(TimelineSequence const& inSequence, FileMedia const& inMedia)
{
	CheckHasSound(inSequence);
	Programme const programme = MakeProgramme(inSequence, inMedia);
	RenderContextScope const context(
		ChooseBlock(programme, kBlockFrames), SN::kTimeMax, SN::ImmutableString("check"));
	MakeGraph(programme, context.Get());
}

void CheckHasSound(TimelineSequence const& inSequence)
{
	if (inSequence.mFrames == 0)
	{
		throw HostError(HostError::Kind::kInput,
			{inSequence.mFile, inSequence.mPlace,
				std::string(inSequence.mHasLength ? "is shorter than one sample" : "has no length") +
					"; there is nothing to render",
				{}});
	}
	if (!inSequence.mWhySilent.empty())
	{
		throw HostError(HostError::Kind::kNothingHeard,
			{inSequence.mFile, inSequence.mPlace,
				"nothing in this timeline is heard: " + inSequence.mWhySilent, {}});
	}
}

} // namespace SonaroHost::Otio
