// Plays ranges of the mix as they come from the server. Every chunk is scheduled at the sample where it belongs, so that
// chunks meet, loops have no seam, and another choice of tracks takes over at the same sample.

import { fetchPatiently } from "./timeline.js";

const FIRST_SECONDS = 0.25;
const CHUNK_SECONDS = 1;
const AHEAD_SECONDS = 4;
const LEAD_SECONDS = 0.04;
const FADE_SECONDS = 0.01;

// Where the samples of a WAV or RF64 begin, and how they are written.
function readHeader(view) {
	const name = (at) => String.fromCharCode(...new Uint8Array(view.buffer, at, 4));
	const format = {};
	for (let at = 12; at + 8 <= view.byteLength; ) {
		if (name(at) === "fmt ") {
			format.channels = view.getUint16(at + 10, true);
			format.bytes = view.getUint16(at + 22, true) / 8;
		}
		if (name(at) === "data") {
			return { ...format, offset: at + 8 };
		}
		at += 8 + view.getUint32(at + 4, true) + (view.getUint32(at + 4, true) % 2);
	}
	throw new Error("the server sent no WAV");
}

function readSample(view, at, bytes) {
	if (bytes === 4) {
		return view.getFloat32(at, true);
	}
	if (bytes === 2) {
		return view.getInt16(at, true) / 32768;
	}
	return ((view.getInt8(at + 2) << 16) | view.getUint16(at, true)) / 8388608;
}

// One choice of tracks while it is heard.
class Voice {
	constructor(player, address) {
		this.player = player;
		this.address = address;
		this.gain = player.context.createGain();
		this.gain.connect(player.volume);
		this.segments = [];
		this.abort = new AbortController();
	}

	// From a sample on, which is heard at a time of the context; later if it comes later, then from later on.
	async start(sample, time) {
		this.nextSample = sample;
		this.nextTime = time;
		this.isFirst = true;
		try {
			await this.fill();
		} catch (error) {
			if (error.name !== "AbortError") {
				this.player.fail(error);
			}
		}
	}

	async fill() {
		const { player } = this;
		while (!this.abort.signal.aborted) {
			const end = player.loopEnd(this.nextSample);
			if (this.nextSample >= end) {
				return;
			}
			if (!this.isFirst && this.nextTime > player.context.currentTime + AHEAD_SECONDS) {
				await new Promise((resolve) => setTimeout(resolve, 100));
				continue;
			}
			const wanted = Math.round((this.isFirst ? FIRST_SECONDS : CHUNK_SECONDS) * player.rate);
			const count = Math.min(wanted, end - this.nextSample);
			const buffer = await player.fetchSound(this.address, this.nextSample, count, this.abort.signal);
			if (this.abort.signal.aborted) {
				return;
			}
			this.schedule(buffer, count);
			const next = this.nextSample + count;
			this.nextSample = player.loopStart(next);
		}
	}

	schedule(buffer, count) {
		const { context, rate } = this.player;
		const seconds = count / rate;
		const earliest = context.currentTime + LEAD_SECONDS;
		if (this.isFirst && !this.takesOver) {
			this.nextTime = Math.max(this.nextTime, earliest);
		} else if (this.nextTime + seconds < earliest) {
			if (this.isFirst) {
				// The former voice is heard until this one has caught up.
				this.nextTime += seconds;
				return;
			}
			// It came too late to be heard at its time: all that follows is heard later.
			this.nextTime = earliest;
			this.player.misses += 1;
		}
		const late = Math.max(0, Math.ceil((earliest - this.nextTime) * rate) / rate);
		this.player.misses += late > 0 && !this.isFirst ? 1 : 0;
		const source = context.createBufferSource();
		source.buffer = buffer;
		source.connect(this.gain);
		source.start(this.nextTime + late, late);
		this.segments.push({ source, sample: this.nextSample, time: this.nextTime, end: this.nextTime + seconds });
		this.nextTime += seconds;
		if (this.isFirst) {
			this.isFirst = false;
			this.onFirst?.(this.segments[0].time + late);
		}
	}

	// The sample that is heard at a time; undefined where none is.
	sampleAt(time) {
		const segment = this.segments.findLast((entry) => entry.time <= time);
		return segment && segment.sample + Math.round(Math.min(time - segment.time, segment.end - segment.time) * this.player.rate);
	}

	forget(time) {
		this.segments = this.segments.filter((entry) => entry.end > time - 1);
	}

	fadeIn(time) {
		this.gain.gain.setValueAtTime(0, time);
		this.gain.gain.linearRampToValueAtTime(1, time + FADE_SECONDS);
	}

	stop(time = this.player.context.currentTime) {
		this.abort.abort();
		this.gain.gain.setValueAtTime(1, time);
		this.gain.gain.linearRampToValueAtTime(0, time + FADE_SECONDS);
		for (const { source } of this.segments) {
			source.stop(time + FADE_SECONDS);
		}
	}
}

export class Player extends EventTarget {
	constructor() {
		super();
		this.query = "";
		this.position = 0;
		this.loop = null;
		this.isCompressed = false;
		this.level = 1;
		this.misses = 0;
		this.formats = new Map();
	}

	setTimeline(timeline) {
		this.rate = timeline.rate;
		this.samples = timeline.samples;
		this.tag = timeline.tag;
		this.isField = timeline.json.programme.layout === "ambisonic1";
		this.position = Math.min(this.position, this.samples);
		this.formats.clear();
		if (this.context && this.context.sampleRate !== this.rate) {
			this.pause();
			this.context.close();
			this.context = null;
		} else if (this.voice) {
			this.takeOver();
		}
	}

	get isPlaying() {
		return Boolean(this.voice);
	}

	open() {
		if (!this.context) {
			try {
				this.context = new AudioContext({ sampleRate: this.rate, latencyHint: "interactive" });
			} catch {
				this.context = new AudioContext();
			}
			this.volume = this.context.createGain();
			this.volume.gain.value = this.level;
			this.volume.connect(this.context.destination);
		}
		return this.context.resume();
	}

	address() {
		return (this.isCompressed ? "mix.flac" : "mix.wav") + this.query;
	}

	play() {
		if (this.isPlaying) {
			return;
		}
		this.open();
		if (this.position >= this.samples) {
			this.position = 0;
		}
		this.voice = new Voice(this, this.address());
		this.voice.start(this.position, this.context.currentTime + LEAD_SECONDS);
		this.changed();
	}

	pause() {
		if (!this.isPlaying) {
			return;
		}
		this.position = this.now();
		this.next?.stop();
		this.voice.stop();
		this.next = this.voice = this.former = null;
		this.changed();
	}

	seek(sample) {
		const wasPlaying = this.isPlaying;
		this.pause();
		this.position = Math.max(0, Math.min(Math.round(sample), this.samples));
		if (wasPlaying && this.position < this.samples) {
			this.play();
		}
		this.changed();
	}

	setQuery(query) {
		this.query = query;
		this.takeOver();
	}

	// Another voice goes on where the present one is then.
	takeOver() {
		const former = this.voice;
		if (!former) {
			return;
		}
		const time = this.context.currentTime + FIRST_SECONDS;
		const sample = former.sampleAt(time);
		if (sample === undefined || former.segments.at(-1).end < time) {
			this.seek(this.now());
			return;
		}
		this.next?.stop();
		const segment = former.segments.findLast((entry) => entry.time <= time);
		const next = new Voice(this, this.address());
		next.takesOver = true;
		this.next = next;
		next.onFirst = (start) => {
			next.fadeIn(start);
			former.stop(start);
			this.voice = next;
			this.next = null;
			this.lastTakeOver = { start, former: former.sampleAt(start), next: next.sampleAt(start) };
			this.former = former;
		};
		next.start(sample, segment.time + (sample - segment.sample) / this.rate);
	}

	setLoop(loop) {
		this.loop = loop;
		if (this.isPlaying) {
			this.seek(this.now());
		}
	}

	setVolume(level) {
		this.level = level;
		if (this.context) {
			this.volume.gain.setTargetAtTime(level, this.context.currentTime, 0.01);
		}
	}

	// Where playing from a sample goes on to, and where it goes on from there.
	loopEnd(sample) {
		return this.loop && sample < this.loop.end ? this.loop.end : this.samples;
	}
	loopStart(sample) {
		return this.loop && sample === this.loop.end ? this.loop.start : sample;
	}

	// The sample that is heard now.
	now() {
		if (!this.voice) {
			return this.position;
		}
		const latency = this.context.outputLatency || this.context.baseLatency || 0;
		const time = this.context.currentTime - latency;
		let sample = this.voice.sampleAt(time);
		if (sample === undefined && this.former) {
			sample = this.former.sampleAt(time);
		}
		this.voice.forget(time);
		return sample ?? this.position;
	}

	// Called with each picture.
	update() {
		if (this.isPlaying) {
			this.position = this.now();
			if (this.position >= this.samples) {
				this.pause();
			}
		}
		return this.position;
	}

	async fetchSound(address, first, count, signal) {
		if (this.isCompressed) {
			const mark = address.includes("?") ? "&" : "?";
			const response = await fetchPatiently(`${address}${mark}start=${first}&samples=${count}`, { signal });
			await this.check(response);
			const buffer = await this.context.decodeAudioData(await response.arrayBuffer());
			return this.isField ? this.makeStereo(buffer, 1, 1) : buffer;
		}
		const format = await this.findFormat(address, signal);
		const frame = format.channels * format.bytes;
		const at = format.offset + first * frame;
		const headers = { Range: `bytes=${at}-${at + count * frame - 1}` };
		const response = await fetchPatiently(address, { headers, signal, cache: "no-store" });
		await this.check(response);
		return this.makeBuffer(new DataView(await response.arrayBuffer()), format, count);
	}

	async findFormat(address, signal) {
		if (!this.formats.has(address)) {
			const response = await fetchPatiently(address, { headers: { Range: "bytes=0-4095" }, signal, cache: "no-store" });
			await this.check(response);
			this.formats.set(address, readHeader(new DataView(await response.arrayBuffer())));
		}
		return this.formats.get(address);
	}

	async check(response) {
		if (!response.ok) {
			throw new Error((await response.json()).error);
		}
	}

	makeBuffer(view, format, count) {
		const buffer = this.context.createBuffer(format.channels, count, this.rate);
		const frame = format.channels * format.bytes;
		for (let channel = 0; channel < format.channels; ++channel) {
			const samples = buffer.getChannelData(channel);
			for (let i = 0, at = channel * format.bytes; i < count; ++i, at += frame) {
				samples[i] = readSample(view, at, format.bytes);
			}
		}
		return this.isField ? this.makeStereo(buffer, 2, Math.SQRT2) : buffer;
	}

	// A sound field as two cardioids, which point to the left and to the right. WAV has W, X, Y and Z with W 3 dB softer,
	// FLAC has W, Y, Z and X.
	makeStereo(field, sideChannel, gain) {
		const stereo = this.context.createBuffer(2, field.length, field.sampleRate);
		const pressure = field.getChannelData(0);
		const side = field.getChannelData(sideChannel);
		for (const [channel, sign] of [[0, 0.5], [1, -0.5]]) {
			const samples = stereo.getChannelData(channel);
			for (let i = 0; i < samples.length; ++i) {
				samples[i] = 0.5 * gain * pressure[i] + sign * side[i];
			}
		}
		return stereo;
	}

	fail(error) {
		this.pause();
		this.dispatchEvent(new CustomEvent("problem", { detail: error.message }));
	}

	changed() {
		this.dispatchEvent(new Event("change"));
	}
}
