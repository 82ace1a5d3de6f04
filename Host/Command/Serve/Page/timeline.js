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

export class Timeline {
	constructor(json) {
		this.json = json;
		this.rate = json.programme.rate;
		this.samples = json.programme.samples;
		this.tracks = json.tracks;
		this.tag = json.tag;
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
		const found = this.tracks.find((track) => place === track.place || place.startsWith(track.place + "/"));
		return found ? found.number : 0;
	}

	// Timecode where the timeline has a rate, counted from its global start without dropping numbers; else minutes.
	format(sample) {
		const rate = this.json.timecodeRate;
		if (!rate) {
			return formatSeconds(sample / this.rate);
		}
		const base = Math.round(rate);
		const start = (this.json.programme.globalStartSeconds || 0) * rate;
		const frame = Math.floor(start + (sample / this.rate) * rate + 1e-6);
		const digits = (number) => String(number).padStart(2, "0");
		const seconds = Math.floor(frame / base);
		return [Math.floor(seconds / 3600), Math.floor(seconds / 60) % 60, seconds % 60, frame % base].map(digits).join(":");
	}
}

export function formatSeconds(seconds) {
	const minutes = Math.floor(seconds / 60);
	return minutes + ":" + (seconds - 60 * minutes).toFixed(3).padStart(6, "0");
}
