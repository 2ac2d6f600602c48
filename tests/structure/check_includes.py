"""Reads the include lines of the library and fails on one that points the wrong way, on a cycle of files, and on a
third-party header outside the places that may know it."""

import pathlib
import re
import sys

# A folder may include from itself and from those named here.
MAY_KNOW = {
    "foundation": [],
    "fft": ["foundation"],
    "vector_core": ["foundation", "fft"],
    "primitives": ["foundation"],
    "windows": ["foundation", "vector_core", "primitives"],
    "streaming": ["foundation", "vector_core", "primitives"],
    "analysis": ["foundation", "fft", "vector_core", "primitives", "windows", "streaming"],
    "fir_design": ["foundation", "vector_core", "primitives", "windows", "streaming", "analysis"],
    "linear_systems": ["foundation", "vector_core", "analysis"],
    "iir_design": ["foundation", "vector_core", "analysis", "linear_systems"],
    "kalman": ["foundation", "vector_core"],
}
# Which files may include a third-party header, by a pattern of the header and one of the file.
THIRD_PARTY = [
    (r"^fftw3\.h$|kissfft|kiss_fft", r"^fft/\w+\.(cpp|h)$"),
    (r"^Eigen/|^unsupported/Eigen/", r"^vector_core/\w+\.cpp$"),
    (r"^boost/", r"^(vector_core|iir_design)/\w+\.cpp$"),
    (r"^hwy/", r"^primitives/[\w-]+\.(cpp|h)$"),
]


def includes(path):
    for line in path.read_text().splitlines():
        found = re.match(r'\s*#\s*include\s+([<"])([^>"]+)[>"]', line)
        if found:
            yield found.group(1), found.group(2)


def main(root):
    library = pathlib.Path(root) / "passband"
    files = sorted(p for p in library.rglob("*") if p.suffix in (".h", ".cpp", ".inc"))
    faults = []
    graph = {}
    for path in files:
        name = path.relative_to(library).as_posix()
        folder = name.split("/")[0] if "/" in name else None
        graph[name] = []
        for mark, header in includes(path):
            if header.startswith("passband/"):
                target = header.removeprefix("passband/")
                graph[name].append(target)
                other = target.split("/")[0]
                if mark != '"':
                    faults.append(f"{name}: {header} is ours and stands in quotes")
                if folder and other != folder and other not in MAY_KNOW[folder]:
                    faults.append(f"{name}: {folder} does not know {other} ({header})")
                if not (library / target).exists():
                    faults.append(f"{name}: {header} does not exist")
                continue
            if mark == '"' and not header.startswith("hwy/"):  # Highway's own way of naming its headers
                faults.append(f"{name}: {header} is not written from the root")
            for pattern, allowed in THIRD_PARTY:
                if re.search(pattern, header) and not re.search(allowed, name):
                    faults.append(f"{name}: {header} has no place here")
        if folder and folder not in MAY_KNOW:
            faults.append(f"{name}: the folder {folder} is not in the plan of the house")

    state = {}

    def visit(name, trail):
        if state.get(name) == "done":
            return
        if state.get(name) == "open":
            faults.append("cycle: " + " -> ".join(trail[trail.index(name):] + [name]))
            return
        state[name] = "open"
        for target in graph.get(name, []):
            # A source that Highway compiles once for each instruction set includes itself by design.
            if target != name:
                visit(target, trail + [name])
        state[name] = "done"

    for name in graph:
        visit(name, [])
    for fault in faults:
        print(fault)
    print(f"{len(files)} files, {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
