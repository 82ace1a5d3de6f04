// One entry of a store of purgeable chunks: MediaEntryLock as MediaVector uses it, with what MediaManager knows of it.
//
// Steps    R1 to R3, W1 to W4, P1 to P4 and D1 to D4 as in MediaVector.h.
// Memory   Each access to the payload is known to some threads, and to the word and the manager's mutex as far as they were
//          released to: a release of a thread that knows hands on, whoever acquires knows. Each change of the word reads the
//          one before it, so that what was released to it stays. Who reads the payload has to know of the last write, who
//          writes has to know of all accesses. A load of the word by a thread that does not know that the entry was
//          written may find it as it was before, and a TryWrite or TryPurge may always do so: then it gives up.
// Bounds   None in time: all threads go on for ever. A reader, two writers, a purge by the manager, which reads, too, and a discard.
//
//: safety
//: ltl WhatIsThereIsEntered
//: plant RELAXED_RELEASE_READ     safety   a purge does not see that a reader has finished
//: plant RELAXED_TRY_READ         safety   a reader does not see what was written
//: plant RELAXED_RELEASE_WRITE    safety   a writer does not publish what it wrote
//: plant RELAXED_TRY_WRITE        safety   a writer does not see that the purge is over
//: plant RELAXED_TRY_PURGE        safety   a purge takes what it does not see
//: plant RELAXED_RELEASE_PURGE    safety   a purge does not say that it is over
//: plant PURGE_IGNORES_READERS    safety   a purge does not mind readers
//: plant READ_WITHOUT_SWAP        safety   readers are counted by a load and a store
//: plant DISCARD_LEAVES_LATE      safety   an entry leaves the manager after it can be written again
//: plant ENTER_BEFORE_WRITING     safety   an entry is known before it can be purged
//: plant PURGE_FORGETS_WHAT_IS_READ ltl:WhatIsThereIsEntered what could not be purged is not entered again

#define PRESENT 128
#define PURGER 64
#define WRITER 32
#define READERS 31

#define THREADS 5
#define MANAGER 3
#define DISCARDER 4
// Bits of what knows of an access: the threads, the word and the mutex.
#define WORD 5
#define MUTEX 6
#define Bit(inWho) (1 << (inWho))

byte word;
// Who knows of the last write of the payload, of each thread's last read of it, and of the last ReleaseWrite.
byte ofWrite = 255, ofRead[THREADS] = 255, ofEntry = 255;
bool payload;
// Whether the manager has the entry in its list.
bool isKnown;
// Threads that are at work.
byte busy;

inline HandOn(inFrom, inTo)
{
	k = 0;
	do
	:: k < THREADS ->
		ofRead[k] = ofRead[k] | (((ofRead[k] >> (inFrom)) & 1) << (inTo));
		k++
	:: else -> break
	od;
	ofWrite = ofWrite | (((ofWrite >> (inFrom)) & 1) << (inTo));
	ofEntry = ofEntry | (((ofEntry >> (inFrom)) & 1) << (inTo));
	k = 0
}

inline ReadPayload(inWho)
{
	d_step {
		assert(payload);
		assert(ofWrite & Bit(inWho));
		ofRead[inWho] = Bit(inWho)
	}
}

inline WritePayload(inWho, inPayload)
{
	d_step {
		assert(payload != inPayload);
		assert(ofWrite & Bit(inWho));
		k = 0;
		do
		:: k < THREADS ->
			assert(ofRead[k] & Bit(inWho));
			ofRead[k] = 255;
			k++
		:: else -> break
		od;
		k = 0;
		payload = inPayload;
		ofWrite = Bit(inWho)
	}
}

// The arrows of the table.
#define CanRead(inWord) ((inWord & PRESENT) && !(inWord & (WRITER | PURGER)))
#define CanWrite(inWord) (!(inWord & (PRESENT | WRITER | PURGER)))
#ifdef PURGE_IGNORES_READERS
#define CanPurge(inWord) CanRead(inWord)
#else
#define CanPurge(inWord) (inWord == PRESENT)
#endif

// A compare-and-swap after a load, both of which may be repeated: whatever came between, it is the word as it is now that
// is changed. outIsDone: whether there was an arrow.
#ifdef READ_WITHOUT_SWAP
#define BETWEEN } atomic {
#else
#define BETWEEN
#endif

inline TryRead(inWho)
{
	if
	:: atomic { CanRead(word) ->
			loaded = word;
			isDone = true;
			BETWEEN
			word = loaded + 1;
			loaded = 0;
#ifndef RELAXED_TRY_READ
			HandOn(WORD, inWho)
#endif
		}
	:: atomic { !CanRead(word) || !(ofEntry & Bit(inWho)) -> isDone = false }
	fi
}

inline ReleaseRead(inWho)
{
	d_step {
		assert(word & READERS);
		word--;
#ifndef RELAXED_RELEASE_READ
		HandOn(inWho, WORD)
#endif
	}
}

inline TryWrite(inWho)
{
	atomic {
		if
		:: CanWrite(word) ->
			isDone = true;
			word = word + WRITER;
#ifndef RELAXED_TRY_WRITE
			HandOn(WORD, inWho)
#endif
		:: isDone = false
		fi
	}
}

inline ReleaseWrite(inWho)
{
	d_step {
		assert(word & WRITER);
		word = (word | PRESENT) - WRITER;
		ofEntry = Bit(inWho) | Bit(WORD);
#ifndef RELAXED_RELEASE_WRITE
		HandOn(inWho, WORD)
#endif
	}
}

inline TryPurge(inWho)
{
	atomic {
		if
		:: CanPurge(word) ->
			isDone = true;
			word = PURGER;
#ifndef RELAXED_TRY_PURGE
			HandOn(WORD, inWho)
#endif
		:: isDone = false
		fi
	}
}

inline ReleasePurge(inWho)
{
	d_step {
		assert(word & PURGER);
		word = word - PURGER;
#ifndef RELAXED_RELEASE_PURGE
		HandOn(inWho, WORD)
#endif
	}
}

// AddEntry, RemoveEntry: under the manager's mutex.
inline SetKnown(inWho, inIsKnown)
{
	d_step {
		HandOn(MUTEX, inWho);
		isKnown = inIsKnown;
		HandOn(inWho, MUTEX)
	}
}

inline Begin()
{
	busy++
}

// When nobody is at work, the entry is absent or there, and not there without the manager's knowing.
inline End()
{
	d_step {
		busy--;
		assert(busy > 0 || word == 0 || (word == PRESENT && isKnown));
		isDone = false
	}
}

active proctype Reader()
{
	bool isDone;
	byte k, loaded;
end:
	do
	:: Begin();
		TryRead(_pid);						// R1
		if
		:: isDone ->
			ReadPayload(_pid);				// R2
			ReleaseRead(_pid)				// R3
		:: else
		fi;
		End()
	od
}

active [2] proctype Writer()
{
	bool isDone;
	byte k;
end:
	do
	:: Begin();
		TryWrite(_pid);						// W1
		if
		:: isDone ->
			WritePayload(_pid, true);		// W2
#ifdef ENTER_BEFORE_WRITING
			SetKnown(_pid, true);
#endif
			ReleaseWrite(_pid);				// W3
#ifndef ENTER_BEFORE_WRITING
			SetKnown(_pid, true)			// W4
#endif
		:: else
		fi;
		End()
	od
}

active proctype Manager()
{
	bool isDone;
	byte k, loaded;
end:
	do
	// TakeVictim: what it finds in its list, it takes out.
	:: atomic { isKnown -> Begin(); SetKnown(MANAGER, false) }
		TryPurge(MANAGER);					// P1
		if
		:: isDone ->
			WritePayload(MANAGER, false);	// P2
			ReleasePurge(MANAGER)			// P3
		:: else ->
			TryRead(MANAGER);				// P4: R1 to R3 around W4
			if
			:: isDone ->
				ReadPayload(MANAGER);
#ifndef PURGE_FORGETS_WHAT_IS_READ
				SetKnown(MANAGER, true);
#endif
				ReleaseRead(MANAGER)
			:: else
			fi
		fi;
		End()
	od
}

active proctype Discarder()
{
	bool isDone;
	byte k;
end:
	do
	:: Begin();
		TryPurge(DISCARDER);				// D1
		if
		:: isDone ->
#ifndef DISCARD_LEAVES_LATE
			SetKnown(DISCARDER, false);		// D2
#endif
			WritePayload(DISCARDER, false);	// D3
			ReleasePurge(DISCARDER);		// D4
#ifdef DISCARD_LEAVES_LATE
			SetKnown(DISCARDER, false)
#endif
		:: else
		fi;
		End()
	od
}

ltl WhatIsThereIsEntered { [] ((word == PRESENT && !isKnown) -> <> (isKnown || word != PRESENT)) }
