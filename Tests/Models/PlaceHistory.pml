// Places of frames by a lock of sequence numbers: PlaceHistory.
//
// Steps    H1 to H4 and F1 to F4 as in PlaceHistory.h.
// Memory   The writer's stores are numbered, STEPS for each change. A load takes the last store of its location as of any
//          moment that is not before what its thread knows; one that acquires what was released knows all stores before.
// Bounds   SLOTS slots, CHANGES changes, fields of which each holds the number of its change.
//
//: safety
//: plant RELAXED_FIELD_STORES     safety   a field is seen before the odd stamp
//: plant RELAXED_FIELD_LOADS      safety   the second look at the stamp comes before the fields
//: plant RELAXED_COUNT            safety   the count is seen before the change that it counts
//: plant NO_ODD_STAMP             safety   a change begins without a mark
//: plant NO_SECOND_LOOK           safety   the stamp is not looked at again

#define SLOTS 2
#define CHANGES 6
#define STEPS 5

// The stores of change i: STEPS * i + one of these. H1, H2 (place and speed), H3, H4.
#define ODD 1
#define PLACE 2
#define SPEED 3
#define EVEN 4
#define COUNT 5

// The number of the last store that was done.
byte now;
// Up to where the reader knows all stores, and the last one it has seen of each location: stamp, place, speed of each
// slot, and the count.
byte known, seen[7];
#define SEEN_COUNT 6

active proctype Writer()
{
	do
	:: now < STEPS * CHANGES -> now++
	:: else -> break
	od
}

// The moment as of which the next load sees its location.
inline ChooseMoment(inLocation)
{
	moment = (seen[inLocation] > known -> seen[inLocation] : known);
	do
	:: moment < now -> moment++
	:: break
	od
}

// The last store of step inStep to a slot up to that moment, 0 for none.
inline FindStore(inStep)
{
	store = moment;
	do
	:: store == 0 -> break
	:: store > 0 && (store - 1) % STEPS + 1 == inStep && ((store - 1) / STEPS) % SLOTS == slot -> break
	:: else -> store--
	od
}

inline See(inLocation)
{
	seen[inLocation] = (store > seen[inLocation] -> store : seen[inLocation])
}

inline Acquire()
{
	known = (store > known -> store : known)
}

// 1 + the change that a stamp is of, with isOdd while it is being written; 0 for none.
inline LoadStamp(outStamp, outIsOdd)
{
	ChooseMoment(slot);
	FindStore(EVEN);
	outStamp = store;
	outIsOdd = false;
#ifndef NO_ODD_STAMP
	FindStore(ODD);
	outIsOdd = store > outStamp;
	outStamp = (outIsOdd -> store : outStamp);
#endif
	store = outStamp;
	outStamp = (store == 0 -> 0 : (store - 1) / STEPS + 1);
	See(slot)
}

inline LoadField(inStep, inLocation, outValue)
{
	ChooseMoment(inLocation);
	FindStore(inStep);
	See(inLocation);
	outValue = (store == 0 -> 0 : (store - 1) / STEPS + 1);
#ifndef RELAXED_FIELD_LOADS
#ifndef RELAXED_FIELD_STORES
	Acquire()
#endif
#endif
}

active proctype Reader()
{
	byte moment, store, slot, index, newest, stamp, again, place, speed;
	bool isOdd, isOddAgain, isRead;
end:
	do
	:: atomic { // F1
			ChooseMoment(SEEN_COUNT);
			index = moment / STEPS;
			store = STEPS * index;
			See(SEEN_COUNT);
#ifndef RELAXED_COUNT
			Acquire();
#endif
			newest = index
		}
		do
		:: index == 0 -> break
		:: else ->
			atomic { // F2
				slot = (index - 1) % SLOTS;
				LoadStamp(stamp, isOdd);
				if
				:: !isOdd -> Acquire()
				:: else
				fi
			}
			// F3
			atomic { LoadField(PLACE, 2 + slot, place) }
			atomic { LoadField(SPEED, 4 + slot, speed) }
			atomic { // F4
#ifdef NO_SECOND_LOOK
				again = stamp;
				isOddAgain = isOdd;
#else
				LoadStamp(again, isOddAgain);
#endif
				isRead = stamp == index && !isOdd && again == stamp && !isOddAgain;
				// One change is not mixed with another one.
				assert(!isRead || (place == index && speed == index));
				// The newest one is missed only when it is written over.
				assert(isRead || index < newest || now > STEPS * (index - 1 + SLOTS));
				stamp = 0; again = 0; place = 0; speed = 0; isOdd = false; isOddAgain = false; moment = 0; store = 0;
				slot = 0;
				if
				:: isRead -> index--
				:: else -> index = 0
				fi
			}
		od;
		newest = 0
	od
}
