#include "SonaroHost/Playback/LiveEffects.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/PrintableText.h"

#include <algorithm>
#include <utility>

namespace SonaroHost::Playback
{

namespace
{

// Where an effect stands: in a description, and in words.
struct Standing
{
	std::string mPath;
	std::string mWords;

	Standing Within(std::string const& inKind, std::size_t inIndex, std::string const& inWords) const
	{
		return {mPath + "/" + inKind + "/" + std::to_string(inIndex), inWords};
	}
};

std::string DescribeNamed(std::string const& inKind, std::string const& inName, std::size_t inIndex)
{
	return inKind + " " + (inName.empty() ? std::to_string(inIndex + 1) : QuoteName(inName));
}

class Collection
{
public:
	void AddSequence(Sequence::Description const& inSequence, Standing const& inAt)
	{
		AddChain(inSequence.mMaster, inAt);
		for (std::size_t i = 0; i < inSequence.mSubmixes.size(); ++i)
		{
			Sequence::Submix const& submix = inSequence.mSubmixes[i];
			AddChain(submix.mChain, inAt.Within("submixes", i, DescribeNamed("submix", submix.mName, i)));
		}
		for (std::size_t i = 0; i < inSequence.mTracks.size(); ++i)
		{
			Sequence::Track const& track = inSequence.mTracks[i];
			AddTrack(track, inAt.Within("tracks", i, DescribeNamed("track", track.mName, i)));
		}
	}

	std::vector<LiveEffect> mEffects;

private:
	void AddTrack(Sequence::Track const& inTrack, Standing const& inAt)
	{
		for (std::size_t i = 0; i < inTrack.mItems.size(); ++i)
		{
			Sequence::Item const& item = inTrack.mItems[i];
			Standing const at = inAt.Within("items", i, DescribeNamed("clip", item.mName, i));
			std::vector<Sequence::Description const*> const nested = ListSequences(item);
			for (std::size_t angle = 0; angle < nested.size(); ++angle)
			{
				AddSequence(*nested[angle], at.Within("sequences", angle, "nested in " + at.mWords));
			}
			AddChain(item.mChain, at);
		}
		AddChain(inTrack.mChain, inAt);
	}

	void AddChain(Sequence::Chain const& inChain, Standing const& inAt)
	{
		for (std::size_t i = 0; i < inChain.mStages.size(); ++i)
		{
			auto const* const effect = std::get_if<Sequence::Effect>(&inChain.mStages[i]);
			if (effect && !effect->mControls.empty())
			{
				std::string const id =
					effect->mOrigin.empty() ? inAt.Within("effects", i, {}).mPath : effect->mOrigin;
				mEffects.push_back({id, inAt.mWords, effect->mName, effect->mControls});
			}
		}
	}
};

// What is held of one list goes over to another one.
void CarryOver(std::vector<LiveEffect> const& inBefore, std::vector<LiveEffect> const& inNext)
{
	for (LiveEffect const& next : inNext)
	{
		auto const before = std::ranges::find_if(inBefore, [&next](LiveEffect const& inEffect)
			{ return inEffect.mId == next.mId && inEffect.mName == next.mName; });
		for (std::size_t i = 0; before != inBefore.end() && i < next.mControls.size(); ++i)
		{
			LiveControl& control = *next.mControls[i];
			LiveControl const* const old = before->FindControl(control.GetFacts().mSymbol);
			auto const held = old ? old->GetHeld() : std::nullopt;
			held ? control.Hold(*held) : control.Release();
		}
	}
}

} // namespace

LiveControl* LiveEffect::FindControl(std::string const& inSymbol) const
{
	auto const found = std::ranges::find_if(
		mControls, [&inSymbol](auto const& inControl) { return inControl->GetFacts().mSymbol == inSymbol; });
	return found != mControls.end() ? found->get() : nullptr;
}

std::shared_ptr<LiveControl> LiveEffect::FindBypass() const
{
	auto const found = std::ranges::find_if(mControls,
		[](auto const& inControl)
		{
			LiveControl::Facts const& facts = inControl->GetFacts();
			return facts.mEnables || facts.mSymbol == LiveControl::kBypassSymbol;
		});
	return found != mControls.end() ? *found : nullptr;
}

bool LiveEffect::IsBypassed() const
{
	auto const control = FindBypass();
	bool const isOn = control && control->GetHeld().value_or(control->GetFacts().mValue) > 0.0f;
	return control && isOn != control->GetFacts().mEnables;
}

std::vector<LiveEffect> LiveEffects::Collect(Sequence::Description const& inDescription)
{
	Collection collection;
	collection.AddSequence(inDescription, {"", "the output"});
	return std::move(collection.mEffects);
}

void LiveEffects::Prepare(Sequence::Description const& inDescription) const
{
	std::lock_guard const lock(mMutex);
	CarryOver(mEffects, Collect(inDescription));
}

void LiveEffects::Adopt(Sequence::Description const& inDescription)
{
	std::lock_guard const lock(mMutex);
	std::vector<LiveEffect> next = Collect(inDescription);
	CarryOver(mEffects, next);
	mEffects = std::move(next);
}

std::vector<LiveEffect> LiveEffects::List() const
{
	std::lock_guard const lock(mMutex);
	return mEffects;
}

std::vector<std::shared_ptr<LiveControl>> LiveEffects::Find(
	std::string const& inId, std::string const& inSymbol) const
{
	std::vector<std::shared_ptr<LiveControl>> found;
	std::lock_guard const lock(mMutex);
	for (LiveEffect const& effect : mEffects)
	{
		auto const has = [&](auto const& inControl) { return inControl->GetFacts().mSymbol == inSymbol; };
		auto const control = std::ranges::find_if(effect.mControls, has);
		if (effect.mId == inId && control != effect.mControls.end())
		{
			found.push_back(*control);
		}
	}
	if (found.empty())
	{
		Refuse("there is no effect with the control " + QuoteName(inSymbol) + " at " + QuoteName(inId) +
			   "; choose one that is listed");
	}
	return found;
}

void LiveEffects::Hold(std::string const& inId, std::string const& inSymbol, float inValue)
{
	for (auto const& control : Find(inId, inSymbol))
	{
		control->Hold(inValue);
	}
}

void LiveEffects::SetBypass(std::string const& inId, bool inIsBypassed)
{
	bool isThere = false;
	std::lock_guard const lock(mMutex);
	for (LiveEffect const& effect : mEffects)
	{
		auto const control = effect.mId == inId ? effect.FindBypass() : nullptr;
		if (control)
		{
			control->Hold(inIsBypassed != control->GetFacts().mEnables ? 1.0f : 0.0f);
			isThere = true;
		}
	}
	if (!isThere)
	{
		Refuse(
			"there is no effect that can be bypassed at " + QuoteName(inId) + "; choose one that is listed");
	}
}

void LiveEffects::Release(std::string const& inId, std::string const& inSymbol)
{
	for (auto const& control : Find(inId, inSymbol))
	{
		control->Release();
	}
}

} // namespace SonaroHost::Playback
