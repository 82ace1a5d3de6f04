// What the server says of the timeline, and times as people read them.

// Fetches until the server has what takes it a while.
export async function fetchPatiently(address, options = {}) {
	for (;;) {
		const response = await fetch(address, options);
		if (response.status !== 503) {
			return response;
		}
		await new Promise((resolve) => setTimeout(resolve, 1000));
	}
}

const MOST_AT_ONCE = 2;
let running = 0;
const waiting = [];

// As above, a few at a time and the latest first: a browser has six connections to a server, and sound needs one that is
// free.
export async function fetchInTurn(address) {
	if (running >= MOST_AT_ONCE) {
		await new Promise((resolve) => waiting.push(resolve));
	}
	running += 1;
	try {
		return await fetchPatiently(address);
	} finally {
		running -= 1;
		waiting.pop()?.();
	}
}

const divisors = (number) => Array.from({ length: number - 1 }, (_, index) => index + 1).filter((step) => number % step === 0);
const ROUND_SECONDS = [1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 14400, 36000];

// Frames of a timeline by their numbers. At 29.97 and 59.94 numbers are left out, so that labels go with the clock
// (SMPTE 12M).
export class Timecode {
	constructor(rate, startSeconds) {
		this.nominal = Math.max(1, Math.ceil(rate - 1e-9));
		const slowed = this.nominal / 1.001;
		this.rate = Math.abs(rate - slowed) < 0.005 ? slowed : rate;
		const drops = (this.nominal === 30 || this.nominal === 60) && this.rate < this.nominal;
		this.dropped = drops ? this.nominal / 15 : 0;
		this.start = startSeconds;
		this.steps = [...divisors(this.nominal), ...ROUND_SECONDS.map((seconds) => seconds * this.nominal)];
	}

	// The number of a frame, and the frame of a number, both from 0 on. A number that is left out stands for the next one.
	numberOf(frame) {
		const minute = 60 * this.nominal - this.dropped;
		const ten = 10 * minute + this.dropped;
		const minutes = Math.floor(Math.max(0, (frame % ten) - this.dropped) / minute);
		return frame + this.dropped * (9 * Math.floor(frame / ten) + minutes);
	}
	frameOf(number) {
		const minutes = Math.floor(number / (60 * this.nominal));
		const first = minutes * 60 * this.nominal + (minutes % 10 ? this.dropped : 0);
		return Math.max(number, first) - this.dropped * (minutes - Math.floor(minutes / 10));
	}

	format(seconds) {
		const frame = Math.round((this.start + seconds) * this.rate);
		return (frame < 0 ? "-" : "") + this.formatNumber(this.numberOf(Math.abs(frame)));
	}
	formatNumber(number) {
		const digits = (field) => String(field).padStart(2, "0");
		const all = Math.floor(number / this.nominal);
		const fields = [Math.floor(all / 3600), Math.floor(all / 60) % 60, all % 60].map(digits);
		return fields.join(":") + (this.dropped ? ";" : ":") + digits(number % this.nominal);
	}

	// Round labels in a stretch, so many seconds apart or more: { seconds, label }.
	ticks(from, to, apart) {
		const step = this.steps.find((numbers) => numbers / this.rate >= apart) ?? this.steps.at(-1);
		const frame = Math.floor((this.start + from) * this.rate);
		const number = frame < 0 ? frame : this.numberOf(frame);
		const ticks = [];
		for (let at = Math.floor(number / step) * step; ; at += step) {
			const seconds = (at < 0 ? at : this.frameOf(at)) / this.rate - this.start;
			if (seconds > to) {
				return ticks;
			}
			const isThere = at < 0 || step >= this.nominal || this.numberOf(this.frameOf(at)) === at;
			if (isThere) {
				ticks.push({ seconds, label: this.format(seconds) });
			}
		}
	}
}

// Minutes and seconds, for timelines that name no rate.
export class Minutes {
	format(seconds) {
		const minutes = Math.floor(seconds / 60);
		return minutes + ":" + (seconds - 60 * minutes).toFixed(3).padStart(6, "0");
	}

	ticks(from, to, apart) {
		const steps = [0.01, 0.02, 0.05, 0.1, 0.2, 0.5, ...ROUND_SECONDS];
		const step = steps.find((seconds) => seconds >= apart) ?? steps.at(-1);
		const first = Math.floor(from / step);
		const count = Math.max(0, Math.floor(to / step) - first + 1);
		return Array.from({ length: count }, (_, index) => ({ seconds: (first + index) * step, label: this.format((first + index) * step) }));
	}
}

export class Timeline {
	constructor(json) {
		this.json = json;
		this.rate = json.programme.rate;
		this.samples = json.programme.samples;
		this.tracks = json.tracks;
		this.numbers = new Map(json.tracks.map((track) => [track.place, track.number]));
		this.tag = json.tag;
		this.clock = json.timecodeRate ? new Timecode(json.timecodeRate, json.programme.globalStartSeconds ?? 0) : new Minutes();
	}

	static async load() {
		const response = await fetchPatiently("timeline.json");
		if (!response.ok) {
			throw new Error((await response.json()).error);
		}
		return new Timeline(await response.json());
	}

	get seconds() {
		return this.samples / this.rate;
	}

	// The number of the outermost track that a place in the file belongs to; 0 for none.
	findTrack(place) {
		for (let part = place; part; part = part.slice(0, part.lastIndexOf("/"))) {
			if (this.numbers.has(part)) {
				return this.numbers.get(part);
			}
		}
		return 0;
	}

	// Lists of rows, one for each track.
	byTrack(rows) {
		const lists = this.tracks.map(() => []);
		rows.forEach((row) => lists[this.findTrack(row.place) - 1]?.push(row));
		return lists;
	}

	format(sample) {
		return this.clock.format(sample / this.rate);
	}
}
