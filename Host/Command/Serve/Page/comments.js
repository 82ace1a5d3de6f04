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

// More rows than that are made only when somebody wants them.
const MOST_ROWS = 300;

export class Comments {
	constructor(list, callbacks) {
		this.list = list;
		this.callbacks = callbacks;
		this.all = [];
		// The id and the text of the one that is being changed.
		this.edited = null;
		this.showsAll = false;
	}

	async load() {
		const response = await fetch("comments.json");
		const json = await response.json();
		if (!response.ok) {
			throw new Error(json.error);
		}
		this.all = json.comments;
		this.callbacks.changed(this.all);
		this.show();
	}

	// Returns whether it was done. What was not is reported.
	add(sample, text) {
		return this.run(() => send("POST", "comments", { sample, text }));
	}

	// A row keeps the focus when the list is made anew.
	show() {
		const { id, action } = document.activeElement?.closest("#comments [data-action]")?.dataset ?? {};
		const shown = this.showsAll ? this.all : this.all.slice(0, MOST_ROWS);
		this.list.replaceChildren(...shown.map((comment) => this.makeRow(comment)));
		if (shown.length < this.all.length) {
			this.list.append(this.makeRest(this.all.length - shown.length));
		}
		if (id) {
			const found = this.list.querySelector(`[data-id="${id}"][data-action="${action}"]`);
			(found ?? this.callbacks.fallback()).focus({ preventScroll: true });
		}
	}

	makeRest(count) {
		const row = document.createElement("li");
		const button = document.createElement("button");
		button.textContent = `Show ${count} more`;
		button.addEventListener("click", () => {
			this.showsAll = true;
			this.show();
			this.list.children[MOST_ROWS].querySelector("button").focus();
		});
		row.append(button);
		return row;
	}

	makeRow(comment) {
		const row = document.createElement("li");
		const make = (tag, action, name) => {
			const element = document.createElement(tag);
			element.dataset.id = comment.id;
			element.dataset.action = action;
			element.setAttribute("aria-label", name);
			return element;
		};
		const button = (action, label, name, onClick) => {
			const element = make("button", action, name);
			element.textContent = label;
			element.addEventListener("click", onClick);
			return element;
		};
		const time = this.callbacks.format(comment.sample);
		row.append(
			button("go", time, `Go to ${time}: ${comment.text}`, () => this.callbacks.seek(comment.sample)),
			this.edited?.id === comment.id ? this.makeForm(make) : this.makeText(comment),
			button("edit", "✎", `Change the comment at ${time}`, () => this.edit(comment)),
			button("remove", "✕", `Remove the comment at ${time}`, () => this.run(() => send("DELETE", `comments/${comment.id}`))),
		);
		return row;
	}

	makeText(comment) {
		const text = document.createElement("span");
		text.className = "text";
		text.textContent = comment.text;
		return text;
	}

	makeForm(make) {
		const form = document.createElement("form");
		form.className = "text";
		const input = make("input", "text", "Text of the comment");
		input.value = this.edited.text;
		input.required = true;
		input.maxLength = 1000;
		form.append(input);
		form.addEventListener("submit", async (event) => {
			event.preventDefault();
			const { id } = this.edited;
			if (await this.run(() => send("PUT", `comments/${id}`, { text: input.value }))) {
				this.edit(null, id);
			}
		});
		input.addEventListener("input", () => (this.edited.text = input.value));
		input.addEventListener("keydown", (event) => event.key === "Escape" && this.edit(null, this.edited.id));
		return form;
	}

	// Begins to change a comment, or ends it.
	edit(comment, former) {
		this.edited = comment && { id: comment.id, text: comment.text };
		this.show();
		const id = comment?.id ?? former;
		this.list.querySelector(`[data-id="${id}"][data-action="${comment ? "text" : "edit"}"]`)?.focus();
	}

	async run(action) {
		try {
			await action();
			await this.load();
			this.callbacks.problem("");
			return true;
		} catch (error) {
			this.callbacks.problem(error.message);
			return false;
		}
	}
}
