#pragma once

#include "ClipRenders.h"
#include "SonaroHost/Render/TimelineRenderJob.h"
#include "TimelineJson.h"

#include <string>
#include <vector>

namespace SonaroHost::Testing
{

// Renders timelines of clips, which play the file that WriteInput writes.
class TimelineClipRenders : public ClipRenders
{
protected:
	Otio::TimelineRenderRequest MakeRequest(Json const& inTimeline) const
	{
		WriteBytes(mFolder / "edit.otio", inTimeline.dump());
		Otio::TimelineRenderRequest request;
		request.mInput = mFolder / "edit.otio";
		request.mOutput = mFolder / "mix.wav";
		request.mOptions.mSampleRate = 48000;
		return request;
	}

	Sound Render(Otio::TimelineRenderRequest const& inRequest)
	{
		Otio::TimelineRenderJob job(inRequest);
		EXPECT_TRUE(job.Run());
		mClips = job.GetSequence().mClips;
		mNotes.clear();
		mIgnored.clear();
		for (Otio::Note const& note : job.GetNotes())
		{
			mNotes.push_back(note.mText);
			if (note.mKind == Otio::Note::Kind::kIgnored)
			{
				mIgnored.push_back(note.mPlace + ": " + note.mText);
			}
		}
		return ReadSound(inRequest.mOutput);
	}

	// Of the last render; of what was ignored, with the places.
	std::vector<Otio::ClipRow> mClips;
	std::vector<std::string> mNotes;
	std::vector<std::string> mIgnored;
};

} // namespace SonaroHost::Testing
