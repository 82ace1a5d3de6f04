// The ring to the device with its gate: SampleRing and DeviceFeed, as Transport uses them.
//
// Steps    P1 to P3 and C1 to C3 as in SampleRing.h, G1 to G6 as in DeviceFeed.h.
// Memory   Each count and the gate are written by one thread, which keeps all values it has stored. A load takes any of
//          them that is not older than what its thread knows. A release carries what its thread had stored before, to
//          whoever acquires it; a relaxed store carries nothing. Samples are plain memory: who reads or overwrites one has
//          to know of the last write or read of it. When nothing is stored any more, the last value is seen at some time.
// Bounds   A ring of TARGET + FADE frames, blocks and fades of one frame, device blocks of two, WRITES frames in all, taken
//          back ones included, COMMANDS that stop or jump.
//
//: safety
//: ltl AllIsHeardThatWasLetThrough
//: plant RELAXED_P3               safety   frames are published without their samples
//: plant RELAXED_C1               safety   the count of frames is loaded without their samples
//: plant P3_BEFORE_P2             safety   frames are published before their samples are there
//: plant RELAXED_C3               safety   frames are given back without an order
//: plant RELAXED_P1               safety   frames are taken for free without an order
//: plant C3_BEFORE_C2             safety   frames are given back before their samples were read
//: plant NO_ROOM_FOR_FADES        safety   the ring is no longer than what is kept filled
//: plant NO_G3                    safety   the gate is not looked at again
//: plant RELAXED_GATE             safety   the gate is stored without an order
//: plant ONE_OPEN_GATE            safety   a gate that was closed and opened meanwhile looks like one that stayed open
//: plant NO_TAKING_BACK           safety   frames of the former place stay in the ring
//: plant HALT_LEAVES_THE_GATE     ltl:AllIsHeardThatWasLetThrough a gate is left where nothing comes
//: plant MISS_BEYOND_THE_GATE     ltl:AllIsHeardThatWasLetThrough a closed gate counts as a miss, and the end is never heard

#define TARGET 3
#define FADE 1
#define ENOUGH 1
#define BLOCK 2
#define COMMANDS 2
#define WRITES 5

#ifdef NO_ROOM_FOR_FADES
#define ROOM TARGET
#else
#define ROOM (TARGET + FADE)
#endif

#define OPEN 100
#define STORES 14
#define IsOpen (gate >= OPEN)

// What was stored in mWritten, and with each value the gate and the samples that it carries along.
byte writtenValue[STORES], writtenGate[STORES], writtenSamples[STORES], writtenLast;
// The same for mGate.
byte gateValue[STORES], gateWritten[STORES], gateSamples[STORES], gateLast;
// What was stored in mRead.
byte readValue[STORES], readLast;

// The render thread's: its own counts, the samples it has written, and how many frames it knows to be read.
byte written, gate, samples, writes, knownRead, readSeen, openings, commands;
bool isPlaying, isOver;
// The device thread's: what it knows of.
byte read, writtenSeen, gateSeen, samplesSeen;

// Per frame of the ring: which one it holds, with which of the samples written, and whether it was taken back.
byte slotFrame[ROOM], slotSample[ROOM];
bool slotIsOld[ROOM];
// How many frames were let through for ever.
byte heardEnd;

// P3
inline StoreWritten(inValue)
{
	d_step {
		written = inValue;
		writtenLast++;
		writtenValue[writtenLast] = written;
#ifndef RELAXED_P3
		writtenGate[writtenLast] = gateLast;
		writtenSamples[writtenLast] = samples;
#endif
		if
		:: IsOpen && written > heardEnd -> heardEnd = written
		:: else
		fi
	}
}

// G4, or G6
inline StoreGate(inValue)
{
	d_step {
		gate = inValue;
		gateLast++;
		gateValue[gateLast] = gate;
#ifndef RELAXED_GATE
		gateWritten[gateLast] = writtenLast;
		gateSamples[gateLast] = samples;
#endif
		if
		:: IsOpen -> heardEnd = written
		:: else -> heardEnd = gate
		fi
	}
}

// G6
inline OpenGate()
{
#ifdef ONE_OPEN_GATE
	StoreGate(OPEN)
#else
	openings++;
	StoreGate(OPEN + openings)
#endif
}

// P2: of the frame that comes next.
inline WriteSamples()
{
	d_step {
		assert(written < knownRead + ROOM);
		samples++;
		writes++;
		slotFrame[written % ROOM] = written;
		slotSample[written % ROOM] = samples;
		slotIsOld[written % ROOM] = false
	}
}

// P2 and P3 in one step: what must not be is found by what a thread knows, whatever comes in between.
inline WriteFrame()
{
	atomic {
#ifdef P3_BEFORE_P2
		StoreWritten(written + 1);
		samples++;
		writes++;
		slotFrame[(written - 1) % ROOM] = written - 1;
		slotSample[(written - 1) % ROOM] = samples
#else
		WriteSamples();
		StoreWritten(written + 1)
#endif
	}
}

// P1: what it loads may be older than what the device has stored.
inline LoadRead()
{
	atomic {
		do
		:: readSeen < readLast -> readSeen++
		:: break
		od;
#ifndef RELAXED_P1
#ifndef RELAXED_C3
		knownRead = readValue[readSeen];
#endif
#endif
		d_step {
			i = 0;
			do
			:: i < STORES ->
				readValue[i] = (i + readSeen <= readLast -> readValue[(i + readSeen) % STORES] : 0);
				i++
			:: else -> break
			od;
			readLast = readLast - readSeen;
			readSeen = 0;
			i = 0
		}
	}
}

// G5
inline TakeBackUnheard()
{
#ifndef NO_TAKING_BACK
	if
	:: written > gate -> StoreWritten(gate)
	:: else
	fi;
#endif
	d_step {
		i = 0;
		do
		:: i < ROOM ->
			if
			:: slotFrame[i] >= gate -> slotIsOld[i] = true
			:: else
			fi;
			i++
		:: else -> break
		od;
		i = 0
	}
}

// Transport::Halt
inline Halt()
{
	TakeBackUnheard();
	if
#ifdef HALT_LEAVES_THE_GATE
	:: IsOpen -> StoreGate(written)
#else
	:: gate != written -> StoreGate(written)
#endif
	:: else
	fi;
	isPlaying = false
}

// Transport::End, whose fade may be broken off.
inline End()
{
	if
	:: IsOpen ->
		StoreGate(written + FADE);
		if
		:: WriteFrame()
		:: true -> Halt()
		fi
	:: else -> TakeBackUnheard()
	fi
}

// Transport::Fill, in which media may be late, a programme may end, or a check may fail.
inline Fill()
{
	do
	:: writes < WRITES - FADE ->
		LoadRead();
		if
		:: TARGET - (written - readValue[readSeen]) >= 1 && written - readValue[readSeen] < TARGET -> skip
		:: else -> break
		fi;
		if
		:: WriteFrame()
		// WriteLast: the gate of a feed that is heard closes before, another one opens after.
		:: IsOpen -> StoreGate(written + 1); WriteFrame(); isPlaying = false; break
		:: !IsOpen -> WriteFrame(); StoreGate(written); isPlaying = false; break
		// Halt
		:: commands < COMMANDS ->
			commands++;
			Halt();
			break
		fi
	:: break
	od;
	if
	:: isPlaying && !IsOpen && written - gate >= ENOUGH && written > gate -> OpenGate()
	:: else
	fi
}

active proctype RenderThread()
{
	byte i;

	do
	:: isPlaying -> Fill()
	:: isPlaying && commands < COMMANDS && writes < WRITES -> commands++; End()
	:: isPlaying && commands < COMMANDS && writes < WRITES -> commands++; End(); isPlaying = false
	:: !isPlaying && commands <= COMMANDS && writes < WRITES - FADE -> isPlaying = true
	:: writes < WRITES -> End(); isPlaying = false; break
	od;
	isOver = true
}

#define Less(inA, inB) (inA > inB -> inA - inB : 0)

// What the device thread can load no more is forgotten, and what is left is numbered anew: equal states are found equal.
inline Forget()
{
	k = 0;
	do
	:: k < STORES ->
		writtenValue[k] = (k + writtenSeen <= writtenLast -> writtenValue[(k + writtenSeen) % STORES] : 0);
		writtenGate[k] = (k + writtenSeen <= writtenLast -> Less(writtenGate[(k + writtenSeen) % STORES], gateSeen) : 0);
		writtenSamples[k] = (k + writtenSeen <= writtenLast -> Less(writtenSamples[(k + writtenSeen) % STORES], samplesSeen) : 0);
		gateValue[k] = (k + gateSeen <= gateLast -> gateValue[(k + gateSeen) % STORES] : 0);
		gateWritten[k] = (k + gateSeen <= gateLast -> Less(gateWritten[(k + gateSeen) % STORES], writtenSeen) : 0);
		gateSamples[k] = (k + gateSeen <= gateLast -> Less(gateSamples[(k + gateSeen) % STORES], samplesSeen) : 0);
		k++
	:: else -> break
	od;
	k = 0;
	do
	:: k < ROOM -> slotSample[k] = Less(slotSample[k], samplesSeen); k++
	:: else -> break
	od;
	samples = Less(samples, samplesSeen);
	writtenLast = writtenLast - writtenSeen;
	gateLast = gateLast - gateSeen;
	writtenSeen = 0;
	gateSeen = 0;
	samplesSeen = 0;
	k = 0
}

// C1
inline LoadWritten(outValue)
{
	atomic {
		do
		:: writtenSeen < writtenLast -> writtenSeen++
		:: !isOver || writtenSeen == writtenLast -> break
		od;
		outValue = writtenValue[writtenSeen];
#ifndef RELAXED_C1
		if
		:: writtenGate[writtenSeen] > gateSeen -> gateSeen = writtenGate[writtenSeen]
		:: else
		fi;
		if
		:: writtenSamples[writtenSeen] > samplesSeen -> samplesSeen = writtenSamples[writtenSeen]
		:: else
		fi;
#endif
		d_step { Forget() }
	}
}

inline LoadGate(outValue)
{
	atomic {
		do
		:: gateSeen < gateLast -> gateSeen++
		:: !isOver || gateSeen == gateLast -> break
		od;
		outValue = gateValue[gateSeen];
		if
		:: gateWritten[gateSeen] > writtenSeen -> writtenSeen = gateWritten[gateSeen]
		:: else
		fi;
		if
		:: gateSamples[gateSeen] > samplesSeen -> samplesSeen = gateSamples[gateSeen]
		:: else
		fi;
		d_step { Forget() }
	}
}

// C3
inline StoreRead()
{
	d_step {
		readLast++;
		readValue[readLast] = read
	}
}

inline FindSupply()
{
	// G1
	LoadGate(seenGate);
	// G2
	LoadWritten(seenWritten);
#ifndef NO_G3
	// G3
	do
	:: LoadGate(again);
		if
		:: again == seenGate -> break
		:: else ->
			LoadGate(seenGate);
			LoadWritten(seenWritten)
		fi
	od;
#endif
	atomic {
		until = (seenWritten < seenGate -> seenWritten : seenGate);
		supply = (until > read -> until - read : 0);
		isEnough = seenWritten >= seenGate || supply >= BLOCK;
#ifdef MISS_BEYOND_THE_GATE
		isEnough = supply >= BLOCK;
#endif
		count = (isMissing && !isEnough -> 0 : (supply < BLOCK -> supply : BLOCK));
		isMissing = !isEnough;
		again = 0; seenGate = 0; seenWritten = 0; supply = 0; until = 0; isEnough = false
	}
}

// C2
inline ReadSamples()
{
	d_step {
		// It was written, and no frame of a former place or beyond the gate is heard.
		assert(next < heardEnd);
		assert(slotFrame[next % ROOM] == next);
		assert(slotSample[next % ROOM] <= samplesSeen);
		assert(!slotIsOld[next % ROOM]);
		next++
	}
}

active proctype Device()
{
	byte k, seenGate, again, seenWritten, until, supply, count, next;
	bool isEnough, isMissing;
end:
	do
	// It asks again and again; where nothing can be heard any more, nothing changes.
	:: !(isOver && read >= heardEnd) ->
		FindSupply();
		atomic {
			next = read;
			read = read + count;
#ifdef C3_BEFORE_C2
			if
			:: count > 0 -> StoreRead()
			:: else
			fi;
		}
		atomic {
#endif
			do
			:: next < read -> ReadSamples()
			:: else -> break
			od;
#ifndef C3_BEFORE_C2
			if
			:: count > 0 -> StoreRead()
			:: else
			fi;
#endif
			count = 0;
			next = 0
		}
	od
}

ltl AllIsHeardThatWasLetThrough { [] (isOver -> <> (read == heardEnd)) }
