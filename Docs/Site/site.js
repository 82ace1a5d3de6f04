// The switch between light, dark and the system's colours. Debian's furo has it as a module that browsers do not load.
document.addEventListener("DOMContentLoaded", () => {
	const kThemes = ["auto", "light", "dark"];
	document.documentElement.classList.remove("no-js");
	document.querySelectorAll(".theme-toggle").forEach((button) => {
		button.addEventListener("click", () => {
			const next = kThemes[(kThemes.indexOf(document.body.dataset.theme) + 1) % kThemes.length];
			document.body.dataset.theme = next;
			localStorage.setItem("theme", next);
		});
	});
});
