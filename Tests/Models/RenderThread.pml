// Commands and wake-ups of the thread that renders ahead: RenderThread with WakeUp, the device's calls, the notices of the
// prefetch thread, and an application that has another graph take over.
//
// Steps    M1 to M4 and L1 to L6 as in RenderThread.h, N1 and N2 as in WakeUp.h.
// Memory   A semaphore and mutexes order everything; the counts of commands may be seen late, but not after a wake-up
//          that followed them.
// Bounds   A command and a takeover, then the end or nothing; one of the two may throw. It is stopped or plays. A ring of two frames, which are
//          filled when their media were read. No sleep ends by itself, except where something is to be tried again:
//          whatever happens has to come with a wake-up.
//
//: safety
//: ltl EveryCommandIsDone
//: ltl TheTakeoverEnds
//: ltl TheRingIsFilledAgain
//: ltl TheThreadEnds
//: plant WAKE_BEFORE_POSTING      ltl:EveryCommandIsDone      the wake-up comes before the command
//: plant POSTED_WITHOUT_WAKING    ltl:EveryCommandIsDone      a command comes without a wake-up
//: plant DRAIN_AFTER_WORK         ltl:EveryCommandIsDone      news is taken for old when the work is done
//: plant DONE_BY_POSTED           ltl:EveryCommandIsDone      what came meanwhile counts as done
//: plant NO_NEWS_FROM_DEVICE      ltl:TheRingIsFilledAgain    the device takes frames in silence
//: plant NO_NEWS_FROM_READER      ltl:TheRingIsFilledAgain    media are read in silence
//: plant ERROR_DROPS_COMMANDS     ltl:TheTakeoverEnds         a command that throws takes those after it along
//: plant NOT_TRIED_AGAIN          ltl:TheTakeoverEnds         a takeover that throws is forgotten
//: plant END_WITHOUT_WAKING       ltl:TheThreadEnds           the thread sleeps while it is to end

#define RING 2
#define TAKEOVER 1
#define OTHER 2
#define NEWS 3

chan commands = [4] of { byte };
byte news;
byte posted, done;
bool isEnding, hasEnded, isTakenOver, hasFailed;
byte filled;
bool isAsked, isRead;
bool isNextAsked, isNextRead;
byte hosts = 2;
bool isPlaying;

// N1. More news than that make no difference.
inline Wake()
{
	atomic {
		if
		:: news < NEWS -> news++
		:: else
		fi
	}
}

inline Post(inCommand)
{
#ifdef WAKE_BEFORE_POSTING
	Wake();
#endif
	// M1: under the mutex
	atomic { commands!inCommand; posted++ }
	// M2
#ifndef WAKE_BEFORE_POSTING
#ifndef POSTED_WITHOUT_WAKING
	Wake()
#endif
#endif
}

active proctype Application()
{
	Post(OTHER);
	hosts--
}

active proctype Editor()
{
	Post(TAKEOVER);
	// M3: passes the gate
	isTakenOver;
	hosts--;
	if
	:: hosts == 0 ->
		// M4
		isEnding = true;
#ifndef END_WITHOUT_WAKING
		Wake()
#endif
	// For all that is known, nothing comes after that for ever.
	:: true
	fi
}

active proctype Device()
{
end:
	do
	:: atomic { filled > 0 -> filled-- }
#ifndef NO_NEWS_FROM_DEVICE
		Wake()
#endif
	od
}

active proctype ReaderOfOne()
{
end:
	do
	:: atomic { isAsked && !isRead -> isRead = true }
#ifndef NO_NEWS_FROM_READER
		Wake()
#endif
	od
}

active proctype ReaderOfNext()
{
end:
	if
	:: atomic { isNextAsked -> isNextRead = true }
#ifndef NO_NEWS_FROM_READER
		Wake()
#endif
	fi
}

active proctype RenderThread()
{
	byte taken, command;
	bool isToTakeOver, isBroken;

	if
	:: isPlaying = true
	:: true
	fi;

	do
	:: isEnding -> break
	:: else ->
		// L1: takes commands, all at once
		if
		:: posted != done -> atomic { taken = len(commands) }
		:: else
		fi;
		isBroken = false;
		command = 0;
		// L2: does them
		do
		:: command < taken ->
			atomic {
				if
				:: commands?TAKEOVER ->
					if
					:: isBroken
					:: else -> isToTakeOver = true
					fi;
					if
					:: isToTakeOver -> isNextAsked = true
#ifdef NOT_TRIED_AGAIN
					:: isToTakeOver && !hasFailed -> hasFailed = true; isToTakeOver = false
#else
					:: isToTakeOver && !hasFailed -> hasFailed = true
#endif
					:: !isToTakeOver
					fi
				:: commands?OTHER ->
					if
					:: true
					:: !hasFailed ->
						hasFailed = true;
#ifdef ERROR_DROPS_COMMANDS
						isBroken = true
#endif
					fi
				fi;
				command++
			}
		:: else -> break
		od;
		// L3: a takeover that failed is tried again
		if
		:: isToTakeOver && !isNextAsked -> isNextAsked = true
		:: else
		fi;
		// L4: fills the ring
		if
		:: isRead -> atomic { isRead = false; isAsked = false; filled = RING }
		:: else
		fi;
		if
		:: isPlaying && filled < RING && !isAsked -> isAsked = true
		:: else
		fi;
		// L5: ends a takeover
		if
		:: isToTakeOver && isNextAsked && (isNextRead || !isPlaying) -> atomic { isToTakeOver = false; isTakenOver = true }
		:: else
		fi;
		// L6
#ifdef DONE_BY_POSTED
		done = posted;
#else
		done = done + taken;
#endif
		atomic { taken = 0; command = 0 }
		// N2: sleeps until there is news, and takes all of it
#ifdef DRAIN_AFTER_WORK
		do
		:: news > 0 -> news--
		:: else -> break
		od;
#endif
end:
		atomic { news > 0 -> news-- }
		do
		:: atomic { news > 0 -> news-- }
		:: news == 0 -> break
		od
	od;
	hasEnded = true
}

ltl EveryCommandIsDone { [] (len(commands) > 0 -> <> (len(commands) == 0 || hasEnded)) }
ltl TheTakeoverEnds { <> isTakenOver }
ltl TheRingIsFilledAgain { [] ((isPlaying && filled == 0) -> <> (filled > 0 || hasEnded)) }
ltl TheThreadEnds { [] (isEnding -> <> hasEnded) }
