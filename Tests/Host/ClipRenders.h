#pragma once

#include "Media.h"
#include "Refusal.h"
#include "SonaroHost/Render/ClipRenderJob.h"
#include "Support/Trials.h"

#include <gmock/gmock.h>

#include <string>

namespace SonaroHost::Testing
{

// Renders sound files by the job of the library, in a folder of its own.
class ClipRenders : public testing::Test
{
protected:
	// To files of floats.
	ClipRenderRequest MakeRequest(
		std::string const& inInput = "in.wav", std::string const& inOutput = "out.wav") const
	{
		ClipRenderRequest request;
		request.mInputs = {{mFolder / inInput}};
		request.mOutput = mFolder / inOutput;
		return request;
	}

	void WriteInput(Sound const& inSound, int inFormat = SF_FORMAT_WAV | SF_FORMAT_FLOAT) const
	{
		WriteSound(mFolder / "in.wav", inFormat, inSound);
	}

	Sound Render(ClipRenderRequest const& inRequest) const
	{
		EXPECT_TRUE(ClipRenderJob(inRequest).Run());
		return ReadSound(inRequest.mOutput);
	}

	// Blocks of any size give the same bits, which come back.
	Sound RenderInBlocks(ClipRenderRequest inRequest) const
	{
		Sound const whole = Render(inRequest);
		for (unsigned const block :
			{SN::Testing::kSmallestBlock, SN::Testing::kSmallBlock, 256u, 1000u, kMaxBlockFrames})
		{
			inRequest.mBlockFrames = block;
			EXPECT_TRUE(SameBits(Render(inRequest), whole)) << "blocks of " << block;
		}
		return whole;
	}

	static void ExpectRefusal(ClipRenderRequest const& inRequest, std::string const& inReason,
		HostError::Kind inKind = HostError::Kind::kRequest)
	{
		EXPECT_THAT(
			GetRefusalOf([&] { ClipRenderJob(inRequest).Run(); }, inKind), testing::HasSubstr(inReason));
	}

	TemporaryFolder mFolder;
};

} // namespace SonaroHost::Testing
