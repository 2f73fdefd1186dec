// Below each result of a search, what stands there: see results.py.
(() => {
  const kLength = 240;
  const words = (new URLSearchParams(location.search).get("q") || "").toLowerCase().split(/\s+/)
    .filter(Boolean);

  const holds = (text) => words.some((word) => text.toLowerCase().includes(word));

  // The part of the page that a result leads to, or the first one with a word that was asked for.
  function textOf(address) {
    const [page, name] = address.split("#");
    const parts = PAGE_TEXTS[page] || [];
    const part = name ? parts.find((one) => one[0] === name) : parts.find((one) => holds(one[1]));
    return part ? part[1] : "";
  }

  function excerpt(text) {
    const places = words.map((word) => text.toLowerCase().indexOf(word)).filter((i) => i >= 0);
    const middle = places.length ? Math.min(...places) : 0;
    const begin = middle < kLength - 60 ? 0 : text.indexOf(" ", middle - 80) + 1;
    const end = text.indexOf(" ", begin + kLength);
    return (begin ? "… " : "") + (end < 0 ? text.slice(begin) : text.slice(begin, end) + " …");
  }

  new MutationObserver((changes) => {
    for (const change of changes) {
      for (const node of change.addedNodes) {
        const link = node.nodeName === "LI" && node.querySelector("a");
        const text = link && textOf(link.getAttribute("href"));
        if (text) {
          const shown = node.appendChild(document.createElement("p"));
          shown.className = "context";
          shown.textContent = excerpt(text);
        }
      }
    }
  }).observe(document.getElementById("search-results"), { childList: true, subtree: true });
})();
