// Drives the page of "sonaro serve" in headless Chromium, through its debugging pipe.
// Usage: node page-test.mjs SONARO EXAMPLES [FOLDER]    FOLDER gets pictures
// Exit codes: 0 when all is in order, 77 where there is no Chromium.

import { execFileSync, spawn } from "node:child_process";
import { cpSync, existsSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { createInterface } from "node:readline";

const [sonaro, examples, pictures] = process.argv.slice(2);
const chromium = ["/usr/bin/chromium", "/usr/bin/chromium-browser"].find(existsSync);
if (!chromium) {
	console.log("no chromium is installed");
	process.exit(77);
}
const PATIENCE = 120000;
const sleep = (milliseconds) => new Promise((resolve) => setTimeout(resolve, milliseconds));
const folder = mkdtempSync(join(tmpdir(), "sonaro-page-"));
// Comments are written beside the timeline.
for (const name of ["Media", "Timeline"]) {
	cpSync(join(examples, name), join(folder, name), { recursive: true });
}
const timeline = join(folder, "Timeline", "edit.otio");

async function startServer(input, port = "0") {
	const server = spawn(sonaro, ["serve", input, "--port", port, "--json", "--cache", join(folder, "cache")]);
	let text = "";
	for await (const line of createInterface({ input: server.stdout })) {
		text += line;
		if (line === "}") {
			return { server, address: JSON.parse(text).address };
		}
	}
	throw new Error("the server does not start");
}

function startBrowser() {
	const flags = ["--headless=new", "--no-sandbox", "--disable-gpu", "--autoplay-policy=no-user-gesture-required",
		"--remote-debugging-pipe", "--window-size=1280,800", `--user-data-dir=${join(folder, "profile")}`, "about:blank"];
	const browser = spawn(chromium, flags, { stdio: ["ignore", "ignore", "ignore", "pipe", "pipe"] });
	const waiting = new Map();
	const problems = [];
	let number = 0;
	let received = "";
	browser.stdio[4].on("data", (bytes) => {
		received += bytes;
		const messages = received.split("\0");
		received = messages.pop();
		for (const message of messages.map((text) => JSON.parse(text))) {
			waiting.get(message.id)?.(message);
			if (message.method === "Runtime.exceptionThrown") {
				problems.push(message.params.exceptionDetails.exception?.description ?? message.params.exceptionDetails.text);
			}
			if (message.method === "Log.entryAdded" && message.params.entry.level === "error" &&
				!/503|ERR_CONNECTION_REFUSED|ERR_INCOMPLETE_CHUNKED|ERR_CONNECTION_RESET|ERR_EMPTY_RESPONSE/.test(message.params.entry.text)) {
				problems.push(message.params.entry.text + " " + (message.params.entry.url ?? ""));
			}
		}
	});
	const send = (method, params = {}, sessionId = undefined) =>
		new Promise((resolve, reject) => {
			number += 1;
			waiting.set(number, ({ result, error }) => (error ? reject(new Error(method + ": " + error.message)) : resolve(result)));
			browser.stdio[3].write(JSON.stringify({ id: number, method, params, sessionId }) + "\0");
		});
	return { browser, send, problems };
}

async function openPage(send) {
	const { targetId } = await send("Target.createTarget", { url: "about:blank" });
	const { sessionId } = await send("Target.attachToTarget", { targetId, flatten: true });
	const call = (method, params) => send(method, params, sessionId);
	await call("Runtime.enable");
	await call("Log.enable");
	await call("Page.enable");
	const run = async (expression) => {
		const { result, exceptionDetails } = await call("Runtime.evaluate", { expression, awaitPromise: true, returnByValue: true });
		if (exceptionDetails) {
			throw new Error(expression + ": " + (exceptionDetails.exception?.description ?? exceptionDetails.text));
		}
		return result.value;
	};
	const waitFor = async (expression) => {
		for (const end = Date.now() + PATIENCE; Date.now() < end; await sleep(50)) {
			if (await run(expression).catch(() => false)) {
				return;
			}
		}
		throw new Error("never true: " + expression);
	};
	return { call, run, waitFor };
}

function expect(condition, text) {
	console.log((condition ? "ok    " : "FAILED ") + text);
	if (!condition) {
		process.exitCode = 1;
	}
}

async function takePicture(page, name) {
	if (pictures) {
		const { data } = await page.call("Page.captureScreenshot", { format: "png" });
		writeFileSync(join(pictures, name), Buffer.from(data, "base64"));
	}
}

async function key(page, name, code = name) {
	const text = name === "Enter" ? "\r" : name.length === 1 ? name : undefined;
	const windowsVirtualKeyCode = { Enter: 13, Tab: 9, ArrowRight: 39, ArrowDown: 40 }[name];
	for (const type of ["keyDown", "keyUp"]) {
		await page.call("Input.dispatchKeyEvent", { type, key: name, code, text, windowsVirtualKeyCode });
	}
}

async function click(page, selector, x = undefined) {
	const box = await page.run(`(() => { const box = document.querySelector(${JSON.stringify(selector)}).getBoundingClientRect();
		return { x: box.x, y: box.y, width: box.width, height: box.height }; })()`);
	const point = { x: box.x + (x ?? box.width / 2), y: box.y + Math.min(box.height / 2, 100), button: "left", clickCount: 1 };
	for (const type of ["mousePressed", "mouseReleased"]) {
		await page.call("Input.dispatchMouseEvent", { type, ...point });
	}
}

async function load(page, address) {
	await page.call("Page.navigate", { url: address });
	await page.waitFor("window.sonaro && performance.getEntriesByName('shown').length > 0");
	return Math.round(await page.run("performance.getEntriesByName('shown')[0].startTime"));
}

async function testPage(page, address) {
	const times = [];
	for (let i = 0; i < 4; ++i) {
		times.push(await load(page, address));
	}
	console.log(`      shown after ${times.join(", ")} ms`);
	const { samples, rate } = await page.run("({ samples: sonaro.player.samples, rate: sonaro.player.rate })");

	await key(page, " ", "Space");
	await page.waitFor("sonaro.player.isPlaying && sonaro.player.now() > 0.2 * sonaro.player.rate");
	expect(await page.run("document.getElementById('play').getAttribute('aria-pressed') === 'true'"), "the audio clock moves");
	await takePicture(page, "playing.png");

	await page.waitFor("sonaro.player.voice?.segments.at(-1)?.end > sonaro.player.context.currentTime + 1");
	await click(page, "[data-action=solo]:enabled");
	await page.waitFor("sonaro.player.lastTakeOver && sonaro.player.query.startsWith('?solo=')");
	const change = await page.run("sonaro.player.lastTakeOver");
	expect(change.former === change.next, `solo takes over at the same sample (${change.former}, ${change.next})`);
	await click(page, "[data-action=solo][aria-pressed=true]");
	await page.run("sonaro.player.pause()");

	const width = await page.run("sonaro.view.width");
	await click(page, "#canvas", width / 3);
	const wanted = samples / 3;
	const position = await page.run("sonaro.player.position");
	expect(Math.abs(position - wanted) < Math.max(0.02 * rate, samples / width), `a click seeks (${position} for ${wanted})`);

	await page.run("sonaro.player.setLoop({ start: 24000, end: 43200 }); sonaro.player.seek(24000); sonaro.player.play()");
	await page.waitFor("sonaro.player.voice.segments.filter((entry) => entry.sample === 24000).length >= 3");
	expect(await page.run(`sonaro.player.voice.segments.every((entry, i, all) => i === 0 ||
		Math.abs(entry.time - all[i - 1].end) < 1e-9)`), "loops have no seam");
	await page.run("sonaro.player.pause(); sonaro.player.setLoop(null)");

	await page.run("sonaro.player.seek(48000)");
	await page.run(`document.getElementById('comment-text').value = 'too <b>loud</b>';
		document.getElementById('comment-form').requestSubmit()`);
	await page.waitFor("document.querySelectorAll('#comments li').length === 1");
	await page.call("Page.reload");
	await page.waitFor("window.sonaro && document.querySelector('#comments li .text')?.textContent === 'too <b>loud</b>'");
	expect(await page.run("sonaro.comments.all[0].sample === 48000"), "comments survive a reload");

	await page.waitFor("sonaro.view.loudness && [...sonaro.view.peaks.values()].every((peaks) => peaks)");
	await takePicture(page, "light.png");
	await page.call("Emulation.setEmulatedMedia", { features: [{ name: "prefers-color-scheme", value: "dark" }] });
	await sleep(500);
	await takePicture(page, "dark.png");
	await page.call("Emulation.setDeviceMetricsOverride", { width: 390, height: 800, deviceScaleFactor: 2, mobile: true });
	await sleep(500);
	expect(await page.run("document.documentElement.scrollWidth <= 390"), "a phone's width is enough");
	await takePicture(page, "phone.png");
	await click(page, "#comments li button:last-child");
	await page.waitFor("document.querySelectorAll('#comments li').length === 0");
	await page.call("Emulation.clearDeviceMetricsOverride");
}

// What is written on what: at least 4.5 to 1 for text and 3 to 1 for drawings (WCAG 2.1, 1.4.3 and 1.4.11).
function findLowContrasts() {
	const rules = readFileSync(new URL("../../../Host/Command/Serve/Page/page.css", import.meta.url), "utf8");
	const luminance = (colour) => [1, 3, 5].map((at) => parseInt(colour.slice(at, at + 2), 16) / 255)
		.map((value) => (value <= 0.04045 ? value / 12.92 : ((value + 0.055) / 1.055) ** 2.4))
		.reduce((sum, value, at) => sum + value * [0.2126, 0.7152, 0.0722][at], 0);
	const pairs = ["text back", "text panel", "text clip", "text missing", "faint back", "faint panel", "marker back", "marker clip",
		"comment back", "on-text on", "on back"].map((pair) => [...pair.split(" "), 4.5]);
	pairs.push(...["wave clip", "play back", "play clip", "loudness back", "on panel"].map((pair) => [...pair.split(" "), 3]));
	return rules.split("\tcolor-scheme:").slice(1).flatMap((theme) => {
		const colours = Object.fromEntries([...theme.split("}")[0].matchAll(/--([\w-]+): (#\w{6});/g)].map((match) => match.slice(1)));
		return pairs.filter(([ink, paper, least]) => {
			const [high, low] = [luminance(colours[ink]), luminance(colours[paper])].sort((a, b) => b - a);
			return (high + 0.05) / (low + 0.05) < least;
		});
	});
}

async function type(page, text) {
	await page.call("Input.insertText", { text });
}

// Everything by keys, and a name for all that can have the focus.
async function testAccess(page) {
	const low = findLowContrasts();
	expect(low.length === 0, "contrasts are high enough: " + low.join("; "));
	await page.call("Accessibility.enable");
	const { nodes } = await page.call("Accessibility.getFullAXTree");
	const focusable = nodes.filter((node) => !node.ignored && node.role.value !== "RootWebArea" &&
		node.properties?.some(({ name, value }) => name === "focusable" && value.value));
	const nameless = focusable.filter((node) => !node.name?.value);
	expect(focusable.length > 15 && nameless.length === 0, `${focusable.length} controls have names: ${nameless.map((node) => node.role.value)}`);

	await page.run("document.activeElement.blur(); sonaro.player.seek(0)");
	await key(page, "ArrowRight");
	expect(await page.run("sonaro.player.position === sonaro.player.rate"), "an arrow goes a second on");
	await key(page, "ArrowDown");
	await key(page, "s", "KeyS");
	expect(await page.run("sonaro.player.query === '?solo=2' && document.getElementById('chosen').textContent.endsWith('solo')"),
		"a track is chosen and soloed by keys, and announced");
	await key(page, "s", "KeyS");
	await key(page, "c", "KeyC");
	await type(page, "by keys");
	await key(page, "Enter");
	await page.waitFor("document.querySelector('#comments .text')?.textContent === 'by keys'");
	for (let tabs = 0; tabs < 4 && !(await page.run("document.activeElement.dataset.action === 'edit'")); ++tabs) {
		await key(page, "Tab");
	}
	await key(page, "Enter");
	await type(page, " alone");
	// Another client's comment comes meanwhile.
	await page.run(`fetch("comments", { method: "POST", headers: { "Content-Type": "application/json" }, body: '{"sample": 7, "text": "other"}' })`);
	await page.waitFor("document.querySelectorAll('#comments li').length === 2");
	await key(page, "Enter");
	await page.waitFor("[...document.querySelectorAll('#comments span.text')].some((text) => text.textContent === 'by keys alone')");
	expect(await page.run("document.activeElement.dataset.action === 'edit'"), "a comment is written and changed by keys");
}

// The labels of the page are those of the program, at a rate that leaves numbers out; angles are listed.
async function testTimecode(page) {
	const time = (value) => ({ OTIO_SCHEMA: "RationalTime.1", rate: 29.97, value });
	const clip = (name) => ({ OTIO_SCHEMA: "Clip.1", name, media_reference: { OTIO_SCHEMA: "ExternalReference.1", target_url: `Media/${name}.flac` },
		source_range: { OTIO_SCHEMA: "TimeRange.1", start_time: time(0), duration: time(150) } });
	const track = (name, children) => ({ OTIO_SCHEMA: "Track.1", name, kind: "Audio", children });
	const angles = { OTIO_SCHEMA: "Stack.1", name: "scene", children: [track("wide", [clip("music")]), track("close", [clip("dialogue")])],
		metadata: { sonaro: { multicam: { cuts: [{ time: 2, angle: 2 }] } } } };
	const input = join(folder, "cameras.otio");
	writeFileSync(input, JSON.stringify({ OTIO_SCHEMA: "Timeline.1", name: "cameras", global_start_time: time(107890),
		tracks: { OTIO_SCHEMA: "Stack.1", children: [track("cameras", [angles])] } }));
	const info = JSON.parse(execFileSync(sonaro, ["info", input, "--json"]));
	const { server, address } = await startServer(input);
	try {
		await load(page, address);
		const start = await page.run("document.getElementById('time').textContent");
		expect(start === info.programme.startTimecode, `the start is labelled ${start}`);
		const labels = await page.run(`import("./timeline.js").then(({ Timecode }) => {
			const clock = new Timecode(29.97, 0);
			return [...[59.96, 60, 600, 3600].map((seconds) => clock.format(seconds)), ...clock.ticks(59.9, 60.2, 0.03).map((tick) => tick.label)]; })`);
		expect(labels.join(" ") === "00:00:59;27 00:00:59;28 00:10:00;00 01:00:00;00 00:00:59;25 00:00:59;26 00:00:59;27 00:00:59;28 00:00:59;29 " +
			"00:01:00;02 00:01:00;03 00:01:00;04 00:01:00;05 00:01:00;06", "dropped numbers are left out: " + labels.join(" "));
		const listed = await page.run("[...document.querySelectorAll('#angles .text')].map((text) => text.textContent.slice(0, 8))");
		expect(listed.join() === "1: wide ,2: close", "angles are listed: " + listed.join());
		await page.waitFor("[...sonaro.view.peaks.values()].every((peaks) => peaks)");
		await takePicture(page, "cameras.png");
	} finally {
		server.kill("SIGTERM");
	}
}

// A server that goes away and comes back.
async function testReturn(page, former, address) {
	await load(page, address);
	former.kill("SIGTERM");
	await page.waitFor("document.getElementById('problem').textContent.startsWith('The server sends no news')");
	const { server } = await startServer(timeline, new URL(address).port);
	await page.waitFor("document.getElementById('problem').hidden");
	expect(await page.run("document.querySelectorAll('#comments li').length === 2"), "the page goes on when the server is back");
	return server;
}

let { server, address } = await startServer(timeline);
const { browser, send, problems } = startBrowser();
try {
	const page = await openPage(send);
	await testPage(page, address);
	await testAccess(page);
	await testTimecode(page);
	server = await testReturn(page, server, address);
	expect(problems.length === 0, "nothing is reported: " + problems.join("; "));
} catch (error) {
	expect(false, error.message);
	console.log(problems.join("\n"));
} finally {
	browser.kill("SIGKILL");
	server.kill("SIGTERM");
	await sleep(300);
	rmSync(folder, { recursive: true, force: true, maxRetries: 5 });
}
process.exit();
