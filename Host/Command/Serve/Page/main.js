// The page: what its parts show and do.

import { Comments } from "./comments.js";
import { Player } from "./player.js";
import { fetchPatiently, Timeline } from "./timeline.js";
import { LOUDNESS_HEIGHT, RULER_HEIGHT, View } from "./view.js";

const find = (id) => document.getElementById(id);
const player = new Player();
const view = new View(find("canvas"), find("scroller"), find("spacer"));
let timeline = null;
const muted = new Set();
const soloed = new Set();
let chosen = 1;
const loopEdges = { start: null, end: null };

// By what they are about, each until it is over.
const problems = new Map();

function showProblem(about, text) {
	problems.set(about, text);
	const all = [...problems.values()].filter(Boolean).join(" · ");
	if (find("problem").textContent !== all) {
		find("problem").textContent = all;
		find("problem").hidden = !all;
	}
}

const comments = new Comments(find("comments"), {
	changed: (all) => view.setComments(all),
	fallback: () => find("comment-text"),
	format: (sample) => timeline.format(sample),
	seek: (sample) => player.seek(sample),
	problem: (text) => showProblem("comments", text),
});

function makeQuery() {
	const lists = [
		["mute", muted],
		["solo", soloed],
	].filter(([, tracks]) => tracks.size > 0);
	return lists.length ? "?" + lists.map(([name, tracks]) => `${name}=${[...tracks].sort((a, b) => a - b).join(",")}`).join("&") : "";
}

function toggle(tracks, number) {
	if (!timeline.tracks[number - 1].isHeard) {
		return;
	}
	if (!tracks.delete(number)) {
		tracks.add(number);
	}
	announceTrack(number);
	showHeads();
	view.touch();
	player.setQuery(makeQuery());
}

view.isUnheard = (number) => muted.has(number) || (soloed.size > 0 && !soloed.has(number));

function makeHead(track) {
	const head = document.createElement("div");
	head.className = "head" + (track.number === chosen ? " chosen" : "");
	head.setAttribute("role", "group");
	head.setAttribute("aria-label", "Track " + track.number + ", " + track.track);
	head.style.height = view.rowHeight() + "px";
	const label = document.createElement("span");
	label.className = "label" + (track.isHeard ? "" : " silent");
	label.textContent = track.track;
	label.title = track.track + (track.isHeard ? "" : ": " + (track.reason ?? "not heard"));
	const button = (text, name, tracks) => {
		const element = document.createElement("button");
		element.textContent = text;
		element.setAttribute("aria-label", `${name} ${track.track}`);
		element.setAttribute("aria-pressed", String(tracks.has(track.number)));
		element.dataset.track = track.number;
		element.dataset.action = name.toLowerCase();
		element.disabled = !track.isHeard;
		element.addEventListener("click", () => toggle(tracks, track.number));
		return element;
	};
	head.append(label, button("M", "Mute", muted), button("S", "Solo", soloed));
	head.addEventListener("pointerdown", () => chosen !== track.number && choose(track.number));
	return head;
}

function choose(number) {
	chosen = Math.max(1, Math.min(number, timeline.tracks.length));
	[...find("heads").querySelectorAll(".head[role]")].forEach((head, index) => {
		head.classList.toggle("chosen", index + 1 === chosen);
		if (index + 1 === chosen) {
			head.scrollIntoView({ block: "nearest" });
		}
	});
	announceTrack(chosen);
}

// For those who do not see it.
function announceTrack(number) {
	const states = [[muted, "muted"], [soloed, "solo"]].filter(([tracks]) => tracks.has(number)).map(([, name]) => name);
	find("chosen").textContent = [`Track ${number}, ${timeline.tracks[number - 1].track}`, ...states].join(", ");
}

function showHeads() {
	const focused = document.activeElement?.dataset?.track ? { ...document.activeElement.dataset } : null;
	const gap = (height, text) => {
		const element = document.createElement("div");
		element.className = "head";
		element.style.height = height + "px";
		const label = document.createElement("span");
		label.className = "label silent";
		label.textContent = text;
		element.append(label);
		return element;
	};
	find("heads").replaceChildren(gap(RULER_HEIGHT, ""), ...timeline.tracks.map(makeHead), gap(LOUDNESS_HEIGHT, "Loudness of the mix"));
	if (focused) {
		find("heads").querySelector(`[data-track="${focused.track}"][data-action="${focused.action}"]`)?.focus();
	}
}

function showList(id, entries) {
	find(id).replaceChildren(
		...entries.map(({ sample, text }) => {
			const row = document.createElement("li");
			const label = document.createElement("span");
			label.className = "text";
			label.textContent = text;
			if (sample !== undefined) {
				const button = document.createElement("button");
				button.textContent = timeline.format(sample);
				button.setAttribute("aria-label", `Go to ${timeline.format(sample)}: ${text}`);
				button.addEventListener("click", () => player.seek(sample));
				row.append(button);
			}
			row.append(label);
			return row;
		}),
	);
}

// Thousands of them take long, so that they are listed only where they are seen.
function showClips() {
	const clips = find("clips-box").open ? timeline.json.clips : [];
	showList("clips", clips.map((clip) => ({
		sample: clip.firstSample,
		text: `${clip.name} on ${clip.track}` + (clip.status === "heard" ? "" : `: ${clip.status}${clip.reason ? ", " + clip.reason : ""}`),
	})));
}

function showLists() {
	const { json } = timeline;
	showList("markers", json.markers.map((marker) => ({ sample: marker.firstSample, text: marker.name })));
	showList("angles", json.angles.map((angle) => ({ sample: angle.firstSample, text: `${angle.angle}: ${angle.name}` + (angle.track ? ` of ${angle.track}` : "") })));
	find("angles-box").hidden = json.angles.length === 0;
	showClips();
	const notes = json.notes.map((note) => ({ text: note.text ?? JSON.stringify(note) }));
	if (!json.wave.isExactAnywhere) {
		notes.unshift({ text: `After a seek, ${json.wave.warmUpSeconds} seconds are rendered first, since ${json.wave.whyNot}.` });
	}
	showList("notes", notes);
	find("notes-box").hidden = notes.length === 0;
}

async function loadTimeline() {
	timeline = await Timeline.load();
	find("name").textContent = timeline.json.file;
	document.title = timeline.json.file + " - Sonaro";
	find("canvas").setAttribute("aria-valuemax", String(timeline.samples));
	for (const tracks of [muted, soloed]) {
		[...tracks].filter((number) => number > timeline.tracks.length).forEach((number) => tracks.delete(number));
	}
	player.query = makeQuery();
	player.setTimeline(timeline);
	view.setTimeline(timeline);
	showHeads();
	showLists();
	if (player.loop?.end > timeline.samples) {
		loopEdges.start = Math.min(loopEdges.start ?? 0, timeline.samples);
		loopEdges.end = timeline.samples;
		applyLoop(true);
	}
	showProblem("timeline", timeline.json.problem ?? "");
	loadLoudness(timeline.tag);
}

async function loadLoudness(tag) {
	const response = await fetchPatiently("loudness.json");
	const json = await response.json();
	if (timeline.tag !== tag) {
		return;
	}
	if (!response.ok) {
		find("status").textContent = `The loudness cannot be measured: ${json.error}`;
		return;
	}
	view.setLoudness(json);
	const lufs = json.integratedLufs;
	find("status").textContent = lufs === null ? "The mix is silent" : `Integrated loudness of the mix: ${lufs.toFixed(1)} LUFS`;
}

const loadComments = () => comments.run(() => {});

function listen() {
	const events = new EventSource("events");
	const on = (name, action) => events.addEventListener(name, (event) => action(JSON.parse(event.data)));
	const reload = () => loadTimeline().catch((error) => showProblem("timeline", error.message));
	on("hello", ({ tag }) => {
		showProblem("server", "");
		if (tag !== timeline?.tag) {
			reload();
		}
		loadComments();
	});
	on("reload", reload);
	on("problem", ({ error }) => showProblem("timeline", error));
	on("comments", loadComments);
	on("progress", ({ percent }) => {
		find("status").textContent = `Measuring the loudness: ${percent} %`;
	});
	events.addEventListener("error", () => {
		showProblem("server", "The server sends no news of changes. The page goes on asking.");
		if (events.readyState === EventSource.CLOSED) {
			setTimeout(listen, 5000);
		}
	});
}

function setEdge(name) {
	loopEdges[name] = player.position;
	applyLoop(true);
}

function applyLoop(isOn) {
	const start = loopEdges.start ?? 0;
	const end = loopEdges.end ?? timeline.samples;
	const loop = isOn && end - start >= timeline.rate / 20 ? { start, end } : null;
	player.setLoop(loop);
	view.setLoop(loop);
	find("loop").setAttribute("aria-pressed", String(Boolean(loop)));
}

const togglePlay = () => (player.isPlaying ? player.pause() : player.play());
const step = (seconds) => player.seek(player.position + seconds * timeline.rate);
const keys = {
	" ": togglePlay,
	ArrowLeft: (event) => step(event.shiftKey ? -10 : -1),
	ArrowRight: (event) => step(event.shiftKey ? 10 : 1),
	Home: () => player.seek(0),
	End: () => player.seek(timeline.samples),
	"[": () => setEdge("start"),
	"]": () => setEdge("end"),
	l: () => applyLoop(!player.loop),
	"+": () => zoom(1.5),
	"=": () => zoom(1.5),
	"-": () => zoom(1 / 1.5),
	0: () => view.setZoom(0),
	ArrowUp: () => choose(chosen - 1),
	ArrowDown: () => choose(chosen + 1),
	m: () => toggle(muted, chosen),
	s: () => toggle(soloed, chosen),
	c: () => find("comment-text").focus(),
};

function zoom(factor, fixed = player.position / timeline.rate * view.pixelsPerSecond) {
	view.setZoom(view.pixelsPerSecond * factor, fixed);
}

function onKey(event) {
	const { tagName, type } = event.target;
	const isText = tagName === "INPUT" && type !== "checkbox";
	const isPressed = event.key === " " && ["BUTTON", "SUMMARY", "INPUT", "A"].includes(tagName);
	const action = keys[event.key.length === 1 ? event.key.toLowerCase() : event.key];
	if (!timeline || isText || isPressed || event.ctrlKey || event.metaKey || event.altKey || !action) {
		return;
	}
	event.preventDefault();
	action(event);
}

function enter() {
	find("play").addEventListener("click", togglePlay);
	find("home").addEventListener("click", keys.Home);
	find("loop").addEventListener("click", keys.l);
	find("zoom-in").addEventListener("click", keys["+"]);
	find("zoom-out").addEventListener("click", keys["-"]);
	find("zoom-all").addEventListener("click", keys[0]);
	find("volume").addEventListener("input", (event) => player.setVolume((event.target.value / 100) ** 2));
	find("compressed").addEventListener("change", (event) => {
		player.isCompressed = event.target.checked;
		player.takeOver();
	});
	find("theme").addEventListener("click", () => {
		const isDark = getComputedStyle(document.documentElement).colorScheme === "dark";
		document.documentElement.dataset.theme = isDark ? "light" : "dark";
		view.touch();
		localStorage.setItem("sonaro-theme", document.documentElement.dataset.theme);
	});
	find("canvas").addEventListener("click", (event) => player.seek(view.sampleAt(event.offsetX)));
	find("scroller").addEventListener("wheel", (event) => {
		if (event.ctrlKey) {
			event.preventDefault();
			const x = event.clientX - find("scroller").getBoundingClientRect().left;
			zoom(event.deltaY < 0 ? 1.25 : 0.8, find("scroller").scrollLeft + x);
		}
	}, { passive: false });
	find("comment-form").addEventListener("submit", async (event) => {
		event.preventDefault();
		const text = find("comment-text");
		if (await comments.add(player.position, text.value)) {
			text.value = "";
		}
	});
	find("clips-box").addEventListener("toggle", () => timeline && showClips());
	window.matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => view.touch());
	window.addEventListener("keydown", onKey);
	window.addEventListener("resize", () => timeline && view.resize());
	player.addEventListener("problem", (event) => showProblem("sound", event.detail));
	player.addEventListener("change", () => {
		if (player.isPlaying) {
			showProblem("sound", "");
		}
		find("play").textContent = player.isPlaying ? "❚❚" : "▶";
		find("play").setAttribute("aria-label", player.isPlaying ? "Pause" : "Play");
		find("play").setAttribute("aria-pressed", String(player.isPlaying));
		const slider = find("canvas");
		slider.setAttribute("aria-valuenow", String(player.position));
		slider.setAttribute("aria-valuetext", timeline.format(player.position));
	});
}

function drawAll() {
	if (timeline) {
		const position = player.update();
		if (player.isPlaying) {
			view.follow(position);
		}
		const time = timeline.format(position);
		// A text that is set again is laid out again.
		if (find("time").textContent !== time) {
			find("time").textContent = time;
			find("comment-time").textContent = time;
		}
		view.draw(position);
	}
	requestAnimationFrame(drawAll);
}

async function begin() {
	const theme = localStorage.getItem("sonaro-theme");
	if (theme) {
		document.documentElement.dataset.theme = theme;
	}
	enter();
	await loadTimeline().catch((error) => showProblem("timeline", error.message));
	performance.mark("shown");
	loadComments();
	listen();
	drawAll();
}

// For tests and for the curious.
window.sonaro = { player, view, comments };
begin();
