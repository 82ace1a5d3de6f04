// Comments at samples, which the server keeps.

async function send(method, address, body) {
	const response = await fetch(address, {
		method,
		headers: { "Content-Type": "application/json" },
		body: JSON.stringify(body ?? {}),
	});
	if (!response.ok) {
		throw new Error((await response.json()).error);
	}
}

export class Comments {
	constructor(list, callbacks) {
		this.list = list;
		this.callbacks = callbacks;
		this.all = [];
	}

	async load() {
		const response = await fetch("comments.json");
		const json = await response.json();
		if (!response.ok) {
			throw new Error(json.error);
		}
		this.all = json.comments;
		this.show();
	}

	async add(sample, text) {
		await send("POST", "comments", { sample, text });
		await this.load();
	}

	show() {
		this.list.replaceChildren(...this.all.map((comment) => this.makeRow(comment)));
	}

	makeRow(comment) {
		const row = document.createElement("li");
		const button = (label, name, action) => {
			const element = document.createElement("button");
			element.textContent = label;
			element.setAttribute("aria-label", name);
			element.addEventListener("click", action);
			return element;
		};
		const time = this.callbacks.format(comment.sample);
		const text = document.createElement("span");
		text.className = "text";
		text.textContent = comment.text;
		row.append(
			button(time, `Go to ${time}: ${comment.text}`, () => this.callbacks.seek(comment.sample)),
			text,
			button("✎", `Change the comment at ${time}`, () => this.edit(comment, row)),
			button("✕", `Remove the comment at ${time}`, () => this.run(() => send("DELETE", `comments/${comment.id}`))),
		);
		return row;
	}

	edit(comment, row) {
		const form = document.createElement("form");
		form.className = "text";
		const input = document.createElement("input");
		input.value = comment.text;
		input.required = true;
		input.maxLength = 1000;
		input.setAttribute("aria-label", "Text of the comment");
		form.append(input);
		form.addEventListener("submit", (event) => {
			event.preventDefault();
			this.run(() => send("PUT", `comments/${comment.id}`, { text: input.value }));
		});
		input.addEventListener("keydown", (event) => event.key === "Escape" && this.show());
		row.querySelector(".text").replaceWith(form);
		input.focus();
	}

	async run(action) {
		try {
			await action();
			await this.load();
		} catch (error) {
			this.callbacks.problem(error.message);
		}
	}
}
