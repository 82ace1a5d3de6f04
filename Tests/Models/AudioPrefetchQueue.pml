// The life of the prefetch queue: AudioPrefetch's slot, AudioPrefetchQueue, RequestQueue, QueueOnlyOnce and the one thread
// of the executor, from the start to the shutdown or to the last reference's end.
//
// Steps    Q1 to Q3, K1 to K3, S1 to S3, B1 to B4 and E1 to E5 as in AudioPrefetchQueue.h.
// Memory   Lists, marks and tasks are under mutexes, so that each step under one is one step here. The counts of cancels
//          are taken to be seen at once; a machine shows them to another thread a moment later.
// Bounds   Three batches of two requests: a caller asks for one of waveforms and then one of playback, whose notice asks for
//          one more. A cancel of playback. One start, then a shutdown at any time, or the owner leaves without one. No run is
//          endless, so that a shutdown that does not end is found with safety, as a thread that waits for ever.
//
//: safety
//: ltl EveryBatchThatWasTakenIsAnswered
//: plant NO_CLOSING               ltl:EveryBatchThatWasTakenIsAnswered a notice asks for more while the queue shuts down
//: plant NO_LAST_TRIGGER          ltl:EveryBatchThatWasTakenIsAnswered the shutdown counts on the trigger of a caller that has not come to it
//: plant MARK_GOES_LATE           ltl:EveryBatchThatWasTakenIsAnswered the trigger's mark is cleared after the run
//: plant NO_WAIT_FOR_TASKS        safety   the shutdown does not wait for what runs
//: plant NO_CHECK_BETWEEN_REQUESTS safety  a cancel does not reach the batch at hand
//: plant MARKER_WITHOUT_END       safety   a cancel goes on after its marker
//: plant WAVEFORMS_IN_A_ROW       safety   playback waits for all waveforms
//: plant UNCOUNTED_SELF           safety   the run does not keep the queue alive

#define PLAYBACK 0
#define WAVEFORM 1
// Entries: batches by number, and the mark of a cancel.
#define FIRST 0
#define IN_TURN 1
#define WAVES 2
#define BATCHES 3
#define MARKER 9
#define REQUESTS 2
#ifndef CANCELS
#define CANCELS 1
#endif

chan entries[2] = [8] of { byte };
bool isClosed[2];
byte cancels[2];

// AudioPrefetch's slot, and how many references to the queue there are. It lives as long as there is one.
bool isInSlot;
byte references;
bool wasStarted;
#define Use() assert(references > 0)

// QueueOnlyOnce and the executor.
bool isMarked, isStopped, isRunning, threadHasEnded;
byte tasks;

bool isTaken[BATCHES], isAnswered[BATCHES];
bool shutdownEnded, ownerLeft;
// Cancels of playback: begun, ended, and how many had ended when each batch was appended.
byte cancelsBegun, cancelsEnded, endedBefore[BATCHES];
// Batches that were there when a cancel began that has ended.
byte cancelled;
// Whether a batch of playback was there when the last entry was done.
bool isPlaybackWaiting;

#define Priority(inBatch) (inBatch == WAVES -> WAVEFORM : PLAYBACK)
#define Appended() ((isTaken[FIRST] -> 1 : 0) + (isTaken[IN_TURN] -> 2 : 0) + (isTaken[WAVES] -> 4 : 0))

// QueueOnlyOnce::Queue. It and the executor live for whoever triggers it.
inline Trigger()
{
	atomic {
		Use();
		if
		:: !isMarked && !isStopped -> tasks++; isMarked = true
		:: else
		fi
	}
}

inline TakeReference(outHasIt)
{
	atomic {
		outHasIt = isInSlot;
		references = references + outHasIt
	}
}

// The last one destroys the queue, which needs its executor no more.
inline DropReference()
{
	atomic {
		Use();
		references--;
		if
		:: references == 0 -> isStopped = true
		:: else
		fi
	}
}

inline QueueBatch(inBatch)
{
	// Q1
	atomic {
		Use();
		if
		:: !isClosed[Priority(inBatch)] ->
			entries[Priority(inBatch)]!inBatch;
			isTaken[inBatch] = true;
			endedBefore[inBatch] = cancelsEnded;
			isAppended = true
		:: else -> isAppended = false
		fi
	}
	if
	:: isAppended ->
		// Q2 changes nothing here. Q3
		Trigger();
		isAppended = false
	:: else
	fi
}

inline CancelAll(inPriority)
{
	// K1
	atomic { Use(); cancels[inPriority]++ }
	// K2
	atomic {
		Use();
		if
		:: !isClosed[inPriority] -> entries[inPriority]!MARKER; isAppended = true
		:: else -> cancels[inPriority]--; isAppended = false
		fi
	}
	// K3
	if
	:: isAppended -> Trigger()
	:: else
	fi
}

proctype Caller()
{
	bool hasIt, isAppended;

	TakeReference(hasIt);
	if
	:: hasIt -> QueueBatch(WAVES); QueueBatch(FIRST); DropReference(); hasIt = false
	:: else
	fi
}

proctype Canceller()
{
	bool hasIt, isAppended;
	byte before, i;

	do
	:: i < CANCELS ->
		TakeReference(hasIt);
		if
		:: hasIt ->
			atomic { cancelsBegun++; before = Appended() }
			CancelAll(PLAYBACK);
			atomic {
				if
				:: isAppended -> cancelled = cancelled | (before & 3)
				:: else
				fi;
				cancelsEnded++;
				before = 0;
				isAppended = false
			}
			DropReference();
			hasIt = false
		:: else
		fi;
		i++
	:: else -> i = 0; break
	od
}

proctype Owner()
{
	bool isAppended;

	if
	:: // AudioPrefetch::Shutdown
		cancelsBegun++;
		// E1
		CancelAll(PLAYBACK);
		CancelAll(WAVEFORM);
		// E2
#ifndef NO_CLOSING
		atomic { Use(); isClosed[PLAYBACK] = true; isClosed[WAVEFORM] = true; isAppended = false }
#endif
		// E3
#ifndef NO_LAST_TRIGGER
		Trigger();
#endif
		// E4
		isStopped = true;
#ifndef NO_WAIT_FOR_TASKS
		(tasks == 0 && !isRunning);
		threadHasEnded;
#endif
		// E5
		atomic { shutdownEnded = true; isInSlot = false }
	:: atomic { ownerLeft = true; isInSlot = false }
	fi;
	DropReference()
}

// B1 to B4. outIsGivenUp is also for reasons of its own: a source throws, or the load is too high.
inline RunBatch(inBatch)
{
	isGivenUp = cancels[Priority(inBatch)] > 0;
	do
	:: request < REQUESTS ->
		// B1 and B2: the request at hand is the one that was begun upon a check.
		atomic {
#ifndef NO_CHECK_BETWEEN_REQUESTS
			if
			:: cancels[Priority(inBatch)] > 0 -> isGivenUp = true
			:: else
			fi;
#endif
			assert(isGivenUp || !shutdownEnded);
			assert(isGivenUp || !(cancelled & (1 << inBatch)));
			request++
		}
	:: else -> break
	od;
	// B3 and B4
	atomic {
		Use();
		assert(!isGivenUp || inBatch == WAVES || cancelsBegun > endedBefore[inBatch]);
		assert(!shutdownEnded && !isAnswered[inBatch]);
		isAnswered[inBatch] = true
	}
	if
	:: inBatch == FIRST ->
		TakeReference(hasIt);
		if
		:: hasIt -> QueueBatch(IN_TURN); DropReference(); hasIt = false
		:: else
		fi
	:: else
	fi
}

// The executor's thread.
proctype Service()
{
	byte entry, queue, request;
	bool isGivenUp, isAppended, hasIt, isEmpty;
end:
	do
	:: atomic { tasks > 0 -> tasks--; isRunning = true }
		// S1
#ifndef MARK_GOES_LATE
		isMarked = false;
#endif
		// The weak reference.
		atomic {
			isEmpty = references == 0;
#ifndef UNCOUNTED_SELF
			references = references + (isEmpty -> 0 : 1)
#endif
		}
		if
		:: isEmpty
		:: else ->
			do
			:: // S2
				queue = PLAYBACK;
				atomic {
					Use();
					if
					:: entries[PLAYBACK]?entry
					:: empty(entries[PLAYBACK]) -> queue = WAVEFORM
					fi
				}
#ifdef WAVEFORMS_IN_A_ROW
again:
#endif
				// S3
				if
				:: queue == WAVEFORM ->
					atomic {
						Use();
						if
						:: entries[WAVEFORM]?entry -> assert(!isPlaybackWaiting)
						:: empty(entries[WAVEFORM]) -> break
						fi
					}
				:: else
				fi;
				if
				:: entry == MARKER ->
					Use();
#ifndef MARKER_WITHOUT_END
					cancels[queue]--
#endif
				:: else -> RunBatch(entry)
				fi;
				atomic {
					isPlaybackWaiting = nempty(entries[PLAYBACK]);
					entry = 0;
					request = 0;
					isGivenUp = false;
#ifdef WAVEFORMS_IN_A_ROW
					if
					:: queue == WAVEFORM -> goto again
					:: else
					fi;
#endif
					queue = 0
				}
			od;
#ifndef UNCOUNTED_SELF
			DropReference()
#endif
		fi;
#ifdef MARK_GOES_LATE
		isMarked = false;
#endif
		isRunning = false
	:: atomic { isStopped && tasks == 0 -> threadHasEnded = true; break }
	od
}

init
{
	atomic {
		// AudioPrefetch::Startup; callers may come before it.
		run Caller();
		run Canceller();
		run Service()
	}
	atomic { references = 1; isInSlot = true; wasStarted = true }
	run Owner()
}

ltl EveryBatchThatWasTakenIsAnswered {
	[] (isTaken[FIRST] -> <> (isAnswered[FIRST] || ownerLeft)) && [] (isTaken[IN_TURN] -> <> (isAnswered[IN_TURN] || ownerLeft)) && [] (isTaken[WAVES] -> <> (isAnswered[WAVES] || ownerLeft))
}
