#!/usr/bin/env python3
# Runs scenario files against the kelvo tool: run.py KELVO FILE...  (the format: README.md).
import json, os, re, shlex, shutil, subprocess, sys, tempfile, time

SETPRIV = [shutil.which("setpriv") or "setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"]
class Failure(Exception): pass
class Skip(Exception): pass


def parse(path):  # the lines before the first '=== name' are shared: each scenario gets them first
    shared, scenarios, verb, joined = [], [], "", ""
    for number, raw in enumerate(open(path, encoding="utf-8"), 1):
        line = joined + raw.rstrip("\n")
        joined = line[:-1] if line.endswith("\\") else ""  # a line ending in a backslash goes on in the next
        if joined or not line.strip() or line.lstrip().startswith("#"):
            continue
        if line.startswith("=== "):
            scenarios.append((line[4:].strip(), []))
        else:  # an indented line repeats the verb above it
            line, verb = (verb + " " + line.strip(), verb) if line[0].isspace() else (line, line.split()[0])
            (scenarios[-1][1] if scenarios else shared).append((number, line))
    return [(name, shared + lines) for name, lines in scenarios]


def braces(word):  # a{b,c}d stands for abd and acd, as in a shell
    m = re.search(r"\{([^{}]*,[^{}]*)\}", word)
    return [w for part in m[1].split(",") for w in braces(word[:m.start()] + part + word[m.end():])] if m else [word]


def listing(root):
    return sorted(os.path.relpath(os.path.join(folder, name), root) + (" -> " + os.readlink(os.path.join(folder, name))
                  if os.path.islink(os.path.join(folder, name)) else "/" if name in dirs else "")
                  for folder, dirs, files in os.walk(root) for name in dirs + files)


class Scenario:
    def __init__(self, kelvo, root):
        self.kelvo, self.root, self.vars, self.processes, self.outside = kelvo, root, {}, {}, []
        self.env = {"HOME": f"{root}/home", "TMPDIR": f"{root}/tmp", "PATH": f"{root}/bin", "LANG": "C"}
        os.makedirs(f"{root}/home"), os.makedirs(f"{root}/tmp"), os.makedirs(f"{root}/bin")
        os.symlink("/bin/rm", f"{root}/bin/rm")  # the one tool every machine has
        self.result, self.as_user, self.expected, self.before = None, [], 0, []

    def path(self, relative):
        return os.path.join(self.root, relative)  # an absolute path stays as it is

    def expand(self, text):
        text = text.replace("$ROOT", self.root).replace("$PID", str(os.getpid()))
        text = text.replace("$VERSION", os.environ.get("KELVO_VERSION", "?"))
        return re.sub(r"\$\{(\w+)(?: ([^}]*))?\}", lambda m: self.du(m[2].split()) if m[1] == "du" else self.vars[m[1]], text)

    def du(self, paths):  # bytes below the paths, each file once, as du sees them (as the last run's user)
        full = [self.path(p) for p in paths]
        run = subprocess.run(self.as_user + ["du", "-csB1", "--"] + full, capture_output=True, text=True)
        own = sum(os.lstat(p).st_blocks * 512 for p in full if os.path.isdir(p) and not os.path.islink(p))
        return str(int(run.stdout.split()[-2]) - own)

    def check_exit(self):
        if self.result and self.result.returncode != self.expected:
            raise Failure(f"exit {self.result.returncode}\n{self.result.stdout}{self.result.stderr}")

    def run_tool(self, words, unprivileged):
        self.check_exit()  # the run before ended as expected
        self.as_user = SETPRIV if unprivileged and os.geteuid() == 0 else []
        if self.as_user and (user := subprocess.run(SETPRIV + ["id", "-u"], capture_output=True, text=True)).stdout != "65534\n":
            raise Failure(f"cannot drop to uid 65534: {user.stdout}{user.stderr}")
        self.before, self.expected, self.previous = listing(self.root), 0, self.result
        self.result = subprocess.run(self.as_user + [self.kelvo] + words, env=self.env, stdin=subprocess.DEVNULL,
                                     capture_output=True, text=True)

    def make(self, path, kind="", value=None):
        target = self.path(path)
        if not target.startswith(self.root + "/"):  # made outside: removed afterwards from the highest folder made
            top = target.rstrip("/")
            while not os.path.lexists(os.path.dirname(top)):
                top = os.path.dirname(top)
            self.outside.append(top)
        os.makedirs(target if target.endswith("/") else os.path.dirname(target), exist_ok=True)
        if kind in ("->", "=>"):
            os.symlink(value, target) if kind == "->" else os.link(self.path(value), target)
        elif not target.endswith("/"):
            open(target, "w").write(value.encode().decode("unicode_escape") if kind == "=" else "k" * int(kind or 0))
            if kind == "=" and value.startswith("#!"):
                os.chmod(target, 0o755)  # a script runs

    def json(self, path, op, expected):
        value = json.loads(self.result.stdout)
        for key in (key or name for key, name in re.findall(r"\[([^\]]+)\]|([^.\[\]]+)", path)):
            if isinstance(value, list):  # by position, or the item of that "id"
                value = value[int(key)] if key.isdigit() and int(key) < len(value) else \
                    next((item for item in value if item.get("id") == key), None)
            else:
                value = value.get(key) if isinstance(value, dict) else None
        try:
            wanted = json.loads(expected)
        except json.JSONDecodeError:
            wanted = expected
        ok = {"absent": lambda: value is None, "count": lambda: value is not None and len(value) == int(expected),
              "~": lambda: isinstance(value, str) and re.search(expected, value)}.get(op, lambda: value == wanted)()
        if not ok:
            raise Failure(f"{path} is {json.dumps(value)}")

    def step(self, line):
        verb, _, rest = line.partition(" ")
        if verb == "exit":  # the last run's status, or that of the run the line goes on with
            status, _, run = rest.partition(" ")
            if run:
                self.step(run)
            self.expected = int(status)
            return self.check_exit()
        rest = self.expand(rest)
        words = shlex.split(rest) if verb in ("kelvo", "nobody", "env", "offers", "git") else rest.split()
        paths = [p for w in words for p in braces(w)]
        if verb == "mk":
            path, kind, value = re.match(r"(\S+)(?: (\S+)(?: (.*))?)?$", rest).groups("")
            for one in braces(path):
                self.make(one, kind, value)
        elif verb == "age":
            when = time.time() - int(words[0][:-1]) * {"d": 86400, "h": 3600, "m": 60}[words[0][-1]]
            everything = [self.root] + [os.path.join(f, n) for f, ds, fs in os.walk(self.root) for n in ds + fs]
            subprocess.run(["touch", "-hd", f"@{when}"] + ([self.path(p) for p in paths[1:]] or everything), check=True)
        elif verb == "mode":
            subprocess.run(["chmod", words[0], "--"] + [self.path(p) for p in paths[1:]], check=True)
        elif verb == "own" and os.geteuid() == 0:  # any other runner is the one `nobody` runs as
            subprocess.run(["chown", "-hR", "65534:65534", "--"] + [self.path(p) for p in paths], check=True)
        elif verb == "env":
            for name, has, value in (word.partition("=") for word in words):
                self.env.pop(name, None) if not has else self.env.__setitem__(name, value)
        elif verb == "requires" and (words != ["root"] or os.geteuid() != 0):
            raise Failure(f"unknown requirement {rest!r}") if words != ["root"] else Skip("needs root")
        elif verb == "process":
            self.make(words[0], "->", "/bin/sh")
            child = subprocess.Popen([self.path(words[0]), "-c", "echo ready; read line"], stdin=subprocess.PIPE,
                                     stdout=subprocess.PIPE)
            child.stdout.readline()  # the shell runs under its name once it speaks
            self.processes[words[0]] = child
        elif verb == "stop":
            child = self.processes.pop(words[0])
            child.stdin.close(), child.wait()
        elif verb == "git":  # in a folder of the tree, with none of the machine's settings
            os.makedirs(self.path(words[0]), exist_ok=True)
            subprocess.run(["git", "-C", self.path(words[0]), "-c", "user.name=k", "-c", "user.email=k@k",
                            "-c", "init.defaultBranch=main"] + words[1:], check=True, stdout=subprocess.DEVNULL,
                           env={"PATH": os.environ["PATH"], "HOME": self.root, "GIT_CONFIG_NOSYSTEM": "1"})
        elif verb == "set":
            self.vars[words[0]] = " ".join(words[1:])
        elif verb in ("kelvo", "nobody"):
            self.run_tool(words if verb == "kelvo" else words[1:], verb == "nobody")
        elif verb in ("out", "err"):
            text = self.result.stdout if verb == "out" else self.result.stderr
            pattern = rest[2:] if rest[:2] in ("~ ", "! ") else None
            found = [l for l in text.split("\n") if (re.search(pattern, l) if pattern is not None else l == rest)]
            if bool(found) == rest.startswith("! "):
                raise Failure(f"{verb} {'has' if found else 'lacks'} {rest!r}:\n{text}")
        elif verb == "same" and self.result.stdout != self.previous.stdout:
            raise Failure(f"standard output differs from the run before:\n{self.previous.stdout}\n---\n{self.result.stdout}")
        elif verb == "json":
            self.json(words[0], words[1], " ".join(words[2:]))
        elif verb == "offers":
            plan = {t["id"]: t["preselected"] for t in json.loads(self.result.stdout)["targets"]}
            wanted = {w.lstrip("+-"): w[0] for w in words}
            wrong = {i for i in set(plan) | set(wanted)
                     if i not in plan or i not in wanted or wanted[i] in "+-" and plan[i] != (wanted[i] == "+")}
            if wrong:
                raise Failure(f"offers differ at {sorted(wrong)}: {plan}")
        elif verb == "removed":
            gone = [p.rstrip("/") for p in paths]
            kept = [e for e in self.before if not any(e.split(" -> ")[0].rstrip("/") == g or e.startswith(g + "/") for g in gone)]
            if (now := listing(self.root)) != kept:
                raise Failure(f"the tree differs: gone {sorted(set(kept) - set(now))}, new {sorted(set(now) - set(kept))}")
        elif verb in ("exists", "missing"):
            if wrong := [p for p in paths if os.path.lexists(self.path(p)) != (verb == "exists")]:
                raise Failure(f"{' and '.join(wrong)} {'missing' if verb == 'exists' else 'present'}")
        elif verb not in ("own", "same", "requires"):
            raise Failure(f"unknown step {verb!r}")

    def close(self):
        for child in self.processes.values():
            child.kill(), child.wait()
        subprocess.run(["chmod", "-R", "u+rwx", "--"] + self.outside + [self.root], stderr=subprocess.DEVNULL)
        subprocess.run(["rm", "-rf", "--"] + self.outside + [self.root])


def main():
    kelvo, failed, skipped = os.path.abspath(sys.argv[1]), 0, 0
    for path in sys.argv[2:]:
        for name, lines in parse(path):
            scenario, where = Scenario(kelvo, tempfile.mkdtemp(prefix="kelvo-scenario-")), path
            os.chmod(scenario.root, 0o755)  # the unprivileged runs enter it too
            try:
                for number, line in lines:
                    where = f"{path}:{number}"
                    scenario.step(line)
                where = path
                scenario.check_exit()
                print(f"ok    {name}")
            except Skip as reason:
                skipped += 1
                print(f"skip  {name}: {reason}")
            except Exception as fault:  # a malformed step or a missing run fails its scenario too
                failed += 1
                print(f"FAIL  {name}\n{where}: {fault}")
            finally:
                scenario.close()
    return 1 if failed else 77 if skipped else 0


if __name__ == "__main__":
    sys.exit(main())
