// Drives the page of "sonaro serve" in headless Chromium, through its debugging pipe.
// Usage: node page-test.mjs SONARO EXAMPLES [FOLDER]    FOLDER gets pictures
// Exit codes: 0 when all is in order, 77 where there is no Chromium.

import { spawn } from "node:child_process";
import { cpSync, existsSync, mkdtempSync, rmSync, writeFileSync } from "node:fs";
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

async function startServer() {
	const server = spawn(sonaro, ["serve", timeline, "--port", "0", "--json", "--cache", join(folder, "cache")]);
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
				!message.params.entry.text.includes("503")) {
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
	for (const type of ["keyDown", "keyUp"]) {
		await page.call("Input.dispatchKeyEvent", { type, key: name, code, text: name.length === 1 ? name : undefined });
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

async function testPage(page, address) {
	const begin = Date.now();
	await page.call("Page.navigate", { url: address });
	await page.waitFor("sonaro.view.timeline && document.querySelectorAll('#heads [data-action=mute]').length > 0");
	console.log(`      loaded after ${Date.now() - begin} ms`);
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
}

const { server, address } = await startServer();
const { browser, send, problems } = startBrowser();
try {
	const page = await openPage(send);
	await testPage(page, address);
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
