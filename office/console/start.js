// The page is painted first; its parts begin to work right after that.
requestAnimationFrame(() => setTimeout(() => import("./console.js")));
