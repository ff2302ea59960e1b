"""Figures, and the file of them that several programs share."""

import json
import os


def join(figures, file):
    """Puts the figures into the file that several programs share, in place of older ones."""
    entries = []
    if os.path.exists(file):
        with open(file, encoding="utf-8") as results:
            entries = json.load(results)
    names = {entry["name"] for entry in figures}
    entries = [entry for entry in entries if entry["name"] not in names] + figures
    os.makedirs(os.path.dirname(os.path.abspath(file)), exist_ok=True)
    with open(file + ".new", "w", encoding="utf-8") as results:
        json.dump(entries, results, indent=2, ensure_ascii=False)
        results.write("\n")
    os.replace(file + ".new", file)
