// The page is painted first; its parts begin to work right after that.
new PerformanceObserver(() => import("./console.js")).observe({ type: "paint", buffered: true });
