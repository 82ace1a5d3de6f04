#pragma once

#include "ReadingNode.h"
#include "Sonaro/IAudioGeneratorPrivate.h"

#include <utility>
#include <vector>

namespace SonaroHost::Sequence
{

// What an item holds that has tracks of its own: it has to know of what is around it.
class NestNode : public SN::Implements<NestNode, ReadingNode, SN::IAudioGeneratorPrivate>
{
public:
	static constexpr SN::Identifier<NestNode> kIdentifier{0x58e2b07c94a1d36full, 0xb3460fe87d12c95aull};

	NestNode(
		std::vector<Generator> inInputs, SN::AudioChannelLayout inLayout, SN::FrameRate const& inFrameRate)
		: Implements(std::move(inInputs)),
		  mLayout(std::move(inLayout)),
		  mFrameRate(inFrameRate)
	{
	}

	// What comes next does not follow what was asked before, wherever it is.
	virtual void Interrupt() = 0;
	// Whether what is around it settles.
	virtual bool IsUnheard() const = 0;
	virtual void SetUnheard(bool inIsUnheard) = 0;
	// In which direction it is played, for what is read ahead.
	virtual void SetPrefetchDirection(bool inIsReverse) = 0;

	unsigned GetNumChannels() SONARO_NONBLOCKING override { return static_cast<unsigned>(mLayout.size()); }
	unsigned GetNumOutputChannels() SONARO_NONBLOCKING override { return GetNumChannels(); }
	SN::AudioChannelLayout GetAudioChannelLayout() override { return mLayout; }
	SN::FrameRate GetGeneratorFrameRate() override { return mFrameRate; }

private:
	SN::AudioChannelLayout mLayout;
	SN::FrameRate mFrameRate;
};

} // namespace SonaroHost::Sequence
