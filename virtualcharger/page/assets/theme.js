// Light, dark, or as the system says. Not a module: it runs before the first paint, so that a page
// that was set to dark never flashes white.
"use strict";

(() => {
  const kThemes = ["auto", "light", "dark"];
  const root = document.documentElement;
  let theme = localStorage.getItem("theme") ?? "auto";

  const apply = () => {
    root.dataset.theme = theme;
    const button = document.getElementById("theme");
    if (button) button.textContent = `Theme: ${theme}`;
    window.dispatchEvent(new Event("themechange"));
  };

  apply();
  matchMedia("(prefers-color-scheme: dark)").addEventListener("change", apply);
  addEventListener("DOMContentLoaded", () => {
    apply();
    document.getElementById("theme").addEventListener("click", () => {
      theme = kThemes[(kThemes.indexOf(theme) + 1) % kThemes.length];
      localStorage.setItem("theme", theme);
      apply();
    });
  });
})();
