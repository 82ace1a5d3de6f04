// Draws the ruler, the tracks and the loudness over what is visible of the programme.

import { fetchInTurn } from "./timeline.js";

export const RULER_HEIGHT = 44;
export const LOUDNESS_HEIGHT = 84;
const FINEST = 256;
const SCALE_STEP = 4;
const MOST_COLUMNS = 400000;
const LOWEST_LUFS = -60;
const LEAST_TICK_PIXELS = 90;
const RETRY_MILLISECONDS = 3000;

// Minima and maxima of all channels together, of a file of peaks in version 2.
function readPeaks(view) {
	const columns = view.getUint32(16, true);
	const channels = view.getInt32(20, true);
	const peaks = { scale: view.getInt32(12, true), low: new Float32Array(columns), high: new Float32Array(columns) };
	for (let column = 0, at = 24; column < columns; ++column) {
		for (let channel = 0; channel < channels; ++channel, at += 4) {
			peaks.low[column] = Math.min(peaks.low[column], view.getInt16(at, true) / 32768);
			peaks.high[column] = Math.max(peaks.high[column], view.getInt16(at + 2, true) / 32768);
		}
	}
	return peaks;
}

export class View {
	constructor(canvas, scroller, spacer) {
		this.canvas = canvas;
		this.layer = document.createElement("canvas");
		this.scroller = scroller;
		this.spacer = spacer;
		this.peaks = new Map();
		this.comments = [];
		this.loudness = null;
		this.loop = null;
		this.pixelsPerSecond = 0;
		this.isUnheard = () => false;
	}

	// Draws again with the next picture, also where nothing moves.
	touch() {
		this.drawn = this.still = null;
	}

	setTimeline(timeline) {
		this.timeline = timeline;
		this.peaks.clear();
		this.loudness = null;
		this.clips = timeline.byTrack(timeline.json.clips).map((clips) => clips.sort((a, b) => a.firstSample - b.firstSample));
		this.angles = timeline.byTrack(timeline.json.angles);
		this.setComments(this.comments);
		this.resize();
	}

	setComments(comments) {
		this.comments = comments;
		this.flags = [
			...this.timeline.json.markers.map((marker) => ({ sample: marker.firstSample, text: marker.name, colour: "marker" })),
			...comments.map((comment) => ({ ...comment, colour: "comment" })),
		].sort((a, b) => a.sample - b.sample);
		this.touch();
	}

	setLoudness(loudness) {
		this.loudness = loudness;
		this.touch();
	}

	setLoop(loop) {
		this.loop = loop;
		this.touch();
	}

	rowHeight() {
		return this.timeline.tracks.length > 12 ? 48 : 68;
	}

	get height() {
		return RULER_HEIGHT + this.timeline.tracks.length * this.rowHeight() + LOUDNESS_HEIGHT;
	}

	resize() {
		const showsAll = this.pixelsPerSecond <= (1.001 * this.width) / this.timeline.seconds;
		this.width = Math.max(this.scroller.clientWidth, 50);
		const ratio = window.devicePixelRatio || 1;
		for (const canvas of [this.canvas, this.layer]) {
			canvas.width = Math.round(this.width * ratio);
			canvas.height = Math.round(this.height * ratio);
		}
		this.canvas.style.width = this.width + "px";
		this.canvas.style.height = this.height + "px";
		this.setZoom(showsAll ? 0 : this.pixelsPerSecond);
		this.touch();
	}

	setZoom(pixelsPerSecond, fixed = this.scroller.scrollLeft + this.width / 2) {
		const { seconds } = this.timeline;
		const least = this.width / seconds;
		const most = Math.max(least, Math.min(4000, 8e6 / seconds));
		const former = this.pixelsPerSecond || least;
		const offset = fixed - this.scroller.scrollLeft;
		this.pixelsPerSecond = Math.min(Math.max(pixelsPerSecond, least), most);
		this.spacer.style.width = Math.round(seconds * this.pixelsPerSecond) + "px";
		this.scroller.scrollLeft = (fixed * this.pixelsPerSecond) / former - offset;
	}

	xOf(sample) {
		return (sample / this.timeline.rate) * this.pixelsPerSecond - this.scroller.scrollLeft;
	}

	sampleAt(x) {
		const sample = ((x + this.scroller.scrollLeft) / this.pixelsPerSecond) * this.timeline.rate;
		return Math.max(0, Math.min(Math.round(sample), this.timeline.samples));
	}

	follow(sample) {
		const x = this.xOf(sample);
		if (x < 0 || x > this.width) {
			this.scroller.scrollLeft += x - this.width * 0.1;
		}
	}

	// The peaks for the present zoom, or coarser ones until they are there.
	findPeaks(track) {
		const perPixel = this.timeline.rate / this.pixelsPerSecond;
		let scale = FINEST;
		while (scale * SCALE_STEP <= perPixel || this.timeline.samples / scale > MOST_COLUMNS) {
			scale *= SCALE_STEP;
		}
		const key = `${track}/${scale}`;
		if (!this.peaks.has(key)) {
			this.peaks.set(key, null);
			this.fetchPeaks(key, this.timeline.tag);
		}
		const others = [...this.peaks].filter(([name, peaks]) => peaks && name.startsWith(`${track}/`));
		return this.peaks.get(key) ?? others.at(-1)?.[1];
	}

	async fetchPeaks(key, tag) {
		try {
			const response = await fetchInTurn(`peaks/${key}.dat`);
			if (response.ok && this.timeline.tag === tag) {
				this.peaks.set(key, readPeaks(new DataView(await response.arrayBuffer())));
				this.touch();
			}
		} catch {
			// The server is away. Asking with each picture would not bring it back.
			setTimeout(() => this.peaks.delete(key), RETRY_MILLISECONDS);
		}
	}

	// What does not move is kept as a picture.
	draw(position) {
		const still = [this.scroller.scrollLeft, this.pixelsPerSecond].join(" ");
		const state = position + " " + still;
		if (state === this.drawn) {
			return;
		}
		this.drawn = state;
		if (still !== this.still) {
			this.still = still;
			this.drawStill();
		}
		this.paint = this.begin(this.canvas);
		this.paint.drawImage(this.layer, 0, 0, this.width, this.height);
		this.drawLine(this.xOf(position), this.colour("play"), 0, 2);
	}

	begin(canvas) {
		const paint = canvas.getContext("2d");
		const ratio = canvas.width / this.width;
		paint.setTransform(ratio, 0, 0, ratio, 0, 0);
		return paint;
	}

	drawStill() {
		const style = getComputedStyle(document.documentElement);
		const colours = new Map();
		this.colour = (name) => {
			if (!colours.has(name)) {
				colours.set(name, style.getPropertyValue("--" + name).trim());
			}
			return colours.get(name);
		};
		const paint = this.begin(this.layer);
		this.paint = paint;
		paint.fillStyle = this.colour("back");
		paint.fillRect(0, 0, this.width, this.height);
		paint.font = "12px system-ui, sans-serif";
		paint.textBaseline = "middle";
		this.drawLoop();
		this.drawRuler();
		this.timeline.tracks.forEach((track, index) => this.drawTrack(track, index));
		this.drawLoudness();
	}

	drawLine(x, colour, top = 0, width = 1) {
		if (x >= -1 && x <= this.width + 1) {
			this.paint.fillStyle = colour;
			this.paint.fillRect(Math.round(x), top, width, this.height - top);
		}
	}

	drawLoop() {
		if (this.loop) {
			this.paint.fillStyle = this.colour("loop");
			const x = this.xOf(this.loop.start);
			this.paint.fillRect(x, 0, this.xOf(this.loop.end) - x, this.height);
		}
	}

	drawRuler() {
		const { paint, timeline } = this;
		const from = this.scroller.scrollLeft / this.pixelsPerSecond;
		const to = from + this.width / this.pixelsPerSecond;
		for (const { seconds, label } of timeline.clock.ticks(from, to, LEAST_TICK_PIXELS / this.pixelsPerSecond)) {
			const x = seconds * this.pixelsPerSecond - this.scroller.scrollLeft;
			paint.fillStyle = this.colour("line");
			paint.fillRect(Math.round(x), 0, 1, this.height - LOUDNESS_HEIGHT);
			paint.fillStyle = this.colour("faint");
			paint.fillText(label, x + 4, 10);
		}
		this.drawFlags();
		paint.fillStyle = this.colour("line");
		paint.fillRect(0, RULER_HEIGHT - 1, this.width, 1);
	}

	// Those that are seen, one for each pixel.
	drawFlags() {
		const { flags } = this;
		let last = -Infinity;
		for (let index = this.findFlag(this.sampleAt(-200)); index < flags.length; ++index) {
			const x = this.xOf(flags[index].sample);
			if (x > this.width) {
				return;
			}
			if (x - last >= 1) {
				this.drawFlag(flags[index], x, index + 1 < flags.length ? this.xOf(flags[index + 1].sample) : Infinity);
				last = x;
			}
		}
	}

	// The first one from a sample on.
	findFlag(sample) {
		let first = 0;
		for (let end = this.flags.length; first < end; ) {
			const middle = (first + end) >> 1;
			if (this.flags[middle].sample < sample) {
				first = middle + 1;
			} else {
				end = middle;
			}
		}
		return first;
	}

	// Its text ends where the next one begins.
	drawFlag({ text, colour }, x, next) {
		this.drawLine(x, this.colour(colour), 20);
		this.paint.fillStyle = this.colour(colour);
		this.paint.fillRect(Math.round(x), 20, 7, 9);
		this.drawText(text, x + 10, 29, Math.min(next - 4, x + 200, this.width) - x - 10);
	}

	drawText(text, x, y, width) {
		if (width < 12) {
			return;
		}
		const { paint } = this;
		paint.save();
		paint.beginPath();
		paint.rect(x, y - 9, width, 18);
		paint.clip();
		paint.fillText(text, x, y);
		paint.restore();
	}

	drawTrack(track, index) {
		const { paint } = this;
		const height = this.rowHeight();
		const top = RULER_HEIGHT + index * height;
		for (const clip of this.clips[index]) {
			const x = this.xOf(clip.firstSample);
			const width = this.xOf(clip.endSample) - x;
			if (x > this.width || x + width < 0) {
				continue;
			}
			paint.fillStyle = this.colour(clip.status === "missing" || clip.status === "outside" ? "missing" : "clip");
			paint.fillRect(x, top + 2, width, height - 5);
			if (width > 3) {
				paint.fillStyle = this.colour("edge");
				paint.fillRect(Math.round(x), top + 2, 1, height - 5);
			}
		}
		paint.globalAlpha = this.isUnheard(track.number) ? 0.35 : 1;
		this.drawPeaks(track, top, height);
		paint.globalAlpha = 1;
		this.angles[index].forEach((angle) => this.drawAngle(angle, top, height));
		this.clips[index].forEach((clip, at, all) => this.drawName(clip, top, all[at + 1]?.firstSample ?? Infinity));
		paint.fillStyle = this.colour("line");
		paint.fillRect(0, top + height - 1, this.width, 1);
	}

	drawName(clip, top, next) {
		const x = Math.max(this.xOf(clip.firstSample), 0) + 4;
		const end = Math.min(this.xOf(clip.endSample), this.xOf(next), this.width);
		this.paint.fillStyle = this.colour("text");
		this.drawText(clip.name + (clip.status === "heard" ? "" : " (" + clip.status + ")"), x, top + 11, end - x - 2);
	}

	// A bar along the lower edge while the angle is heard.
	drawAngle(angle, top, height) {
		const x = this.xOf(angle.firstSample);
		const end = this.xOf(angle.endSample);
		if (x > this.width || end < 0) {
			return;
		}
		this.paint.fillStyle = this.colour("marker");
		this.paint.fillRect(x + 1, top + height - 5, Math.max(1, end - x - 2), 2);
		const left = Math.max(x, 0) + 4;
		this.drawText(`${angle.angle}: ${angle.name}`, left, top + height - 13, Math.min(end, this.width) - left - 2);
	}

	drawPeaks(track, top, height) {
		const peaks = track.isHeard ? this.findPeaks(track.number) : null;
		if (!peaks) {
			return;
		}
		const { paint } = this;
		const middle = top + height / 2 + 4;
		const half = height / 2 - 8;
		const columnsPerPixel = this.timeline.rate / this.pixelsPerSecond / peaks.scale;
		const start = this.scroller.scrollLeft * columnsPerPixel;
		paint.fillStyle = this.colour("wave");
		for (let x = 0; x < this.width; ++x) {
			const first = Math.floor(start + x * columnsPerPixel);
			const end = Math.max(first + 1, Math.floor(start + (x + 1) * columnsPerPixel));
			let low = 0;
			let high = 0;
			for (let column = first; column < end && column < peaks.low.length; ++column) {
				low = Math.min(low, peaks.low[column]);
				high = Math.max(high, peaks.high[column]);
			}
			if (low < 0 || high > 0) {
				paint.fillRect(x, middle - high * half, 1, Math.max(1, (high - low) * half));
			}
		}
	}

	drawLoudness() {
		const { paint } = this;
		const top = this.height - LOUDNESS_HEIGHT;
		const yOf = (lufs) => top + 6 + ((LOUDNESS_HEIGHT - 12) * Math.min(Math.max(lufs, LOWEST_LUFS), 0)) / LOWEST_LUFS;
		paint.fillStyle = this.colour("line");
		for (const lufs of [-12, -24, -36, -48]) {
			paint.fillRect(0, Math.round(yOf(lufs)), this.width, 1);
		}
		paint.fillStyle = this.colour("faint");
		for (const lufs of [-12, -36]) {
			paint.fillText(lufs + " LUFS", 4, yOf(lufs) - 7);
		}
		if (this.loudness) {
			this.drawCurve(this.loudness.shortTerm, yOf);
		}
	}

	drawCurve(values, yOf) {
		const { paint } = this;
		const step = this.loudness.stepSeconds * this.pixelsPerSecond;
		const first = Math.max(0, Math.floor(this.scroller.scrollLeft / step) - 1);
		const last = Math.min(values.length - 1, Math.ceil((this.scroller.scrollLeft + this.width) / step) + 1);
		paint.strokeStyle = this.colour("loudness");
		paint.lineWidth = 1.5;
		paint.beginPath();
		for (let i = first, isDrawing = false; i <= last; ++i) {
			const x = (i + 1) * step - this.scroller.scrollLeft;
			if (values[i] === null) {
				isDrawing = false;
			} else if (isDrawing) {
				paint.lineTo(x, yOf(values[i]));
			} else {
				paint.moveTo(x, yOf(values[i]));
				isDrawing = true;
			}
		}
		paint.stroke();
	}
}
