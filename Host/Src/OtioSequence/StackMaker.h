#pragma once

#include "OtioSequence/Item/ItemMaker.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost::Otio
{

// Makes a sequence of a stack: each child that is heard becomes a track.
class StackMaker
{
public:
	// All outlive this object.
	StackMaker(MakerContext& ioContext, Stack const& inStack, Scope const& inScope,
		SN::AudioChannelLayout const& inLayout)
		: mContext(ioContext),
		  mStack(inStack),
		  mScope(inScope),
		  mLayout(inLayout)
	{
	}

	// Leaves the stack's own levels out.
	std::shared_ptr<Sequence::Description> Make();
	// A sequence for each angle, of which each has the stack's submixes to itself.
	std::vector<std::shared_ptr<Sequence::Description const>> MakeAngles();

private:
	void Begin();
	// inUse(ItemView) after each child.
	template <class Use>
	void AddChildren(Use const& inUse);
	void AddSubmixes();
	void AddChild(std::size_t inIndex, std::string const& inWhySilent);
	TrackRow MakeRow(ItemView const& inChild, std::size_t inIndex, std::string const& inWhySilent) const;
	void AddItems(ItemView const& inChild, std::string const& inWhySilent, Sequence::Track& ioTrack);
	// Whether a track's items can stand on the sequence's one as they are.
	bool IsPlain(ItemView const& inChild) const;
	Sequence::Chain MakeChain(ItemView const& inChild, TrackRow const& inRow);
	Sequence::Output FindOutput(std::optional<std::string> const& inName) const;
	std::size_t FindSubmix(std::string const& inName) const;
	// Where time 0 of the stack as it is cut lies.
	SN::TickTime GetStart() const;

	MakerContext& mContext;
	Stack const& mStack;
	Scope const& mScope;
	SN::AudioChannelLayout const& mLayout;
	std::shared_ptr<Sequence::Description> mSequence = std::make_shared<Sequence::Description>();
	// The index of the angle that the next child is, in a multicam stack.
	std::optional<std::size_t> mAngle;
};

// A sequence of what is in a stack or a track, without its own levels; of a multicam stack one for each angle.
std::vector<std::shared_ptr<Sequence::Description const>> MakeNestedSequences(MakerContext& ioContext,
	ItemView const& inItem, Scope const& inScope, SN::AudioChannelLayout const& inLayout);

} // namespace SonaroHost::Otio
