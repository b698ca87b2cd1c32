#!/usr/bin/env python3
"""Runs scenario files against the kelvo tool: run.py KELVO FILE...  (the format: README.md)."""
import itertools, json, os, re, shlex, shutil, subprocess, sys, tempfile, time

SETPRIV = [shutil.which("setpriv") or "setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"]


class Failure(Exception):
    pass


class Skip(Exception):
    pass


def parse(path):
    """The lines before the first '=== name' are shared; each scenario gets them first."""
    shared, scenarios, verb, joined = [], [], "", ""
    for number, raw in enumerate(open(path, encoding="utf-8"), 1):
        line = joined + raw.rstrip("\n")
        if not line.strip() or line.lstrip().startswith("#"):
            continue
        if line.endswith("\\"):  # a line ending in a backslash goes on in the next
            joined = line[:-1]
            continue
        joined = ""
        if line.startswith("=== "):
            scenarios.append((line[4:].strip(), []))
            continue
        if line[0].isspace():
            line = verb + " " + line.strip()  # an indented line repeats the verb above it
        else:
            verb = line.split()[0]
        (scenarios[-1][1] if scenarios else shared).append((number, line))
    return [(name, shared + lines) for name, lines in scenarios]


def listing(root):
    entries = []
    for folder, dirs, files in os.walk(root):
        for name in dirs + files:
            full = os.path.join(folder, name)
            mark = " -> " + os.readlink(full) if os.path.islink(full) else "/" if name in dirs else ""
            entries.append(os.path.relpath(full, root) + mark)
    return sorted(entries)


class Scenario:
    def __init__(self, kelvo, root):
        self.kelvo, self.root, self.vars, self.processes, self.outside = kelvo, root, {}, {}, []
        self.env = {"HOME": f"{root}/home", "TMPDIR": f"{root}/tmp", "PATH": f"{root}/bin", "LANG": "C"}
        for folder in ("home", "tmp", "bin"):
            os.mkdir(os.path.join(root, folder))
        os.symlink("/bin/rm", f"{root}/bin/rm")  # the one tool every machine has
        self.result, self.unprivileged, self.expected_exit, self.before = None, False, None, []

    def path(self, relative):
        return os.path.join(self.root, relative)

    def expand(self, text):
        text = text.replace("$ROOT", self.root).replace("$PID", str(os.getpid()))
        text = text.replace("$VERSION", os.environ.get("KELVO_VERSION", "?"))
        return re.sub(r"\$\{(\w+)(?: ([^}]*))?\}", lambda m: self.du(m[2].split()) if m[1] == "du" else self.vars[m[1]], text)

    def du(self, paths):
        """Bytes below the paths, each file once, as du sees them (as the last run's user)."""
        full = [self.path(p) for p in paths]
        run = subprocess.run((SETPRIV if self.unprivileged and os.geteuid() == 0 else []) + ["du", "-csB1", "--"] + full,
                             stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        own = sum(os.lstat(p).st_blocks * 512 for p in full if os.path.isdir(p) and not os.path.islink(p))
        return str(int(run.stdout.split()[-2]) - own)

    def finish_run(self):
        if self.result and self.expected_exit is None and self.result.returncode != 0:
            raise Failure(f"exit {self.result.returncode}\n{self.result.stdout}{self.result.stderr}")

    def run_tool(self, words, unprivileged):
        self.finish_run()
        prefix = []
        if unprivileged and os.geteuid() == 0:
            check = subprocess.run(SETPRIV + ["id", "-u"], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
            if check.stdout.strip() != "65534":
                raise Failure("cannot drop to uid 65534: " + check.stdout.strip())
            prefix = SETPRIV
        self.before, self.unprivileged, self.expected_exit, self.previous = listing(self.root), unprivileged, None, self.result
        self.result = subprocess.run(prefix + [self.kelvo] + words, env=self.env, stdin=subprocess.DEVNULL,
                                     stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

    def make(self, text):
        words = [w for w in re.match(r"(\S+)(?: (\S+)(?: (.*))?)?$", text).groups() if w is not None]
        target = words[0] if words[0].startswith("/") else self.path(words[0])
        self.note_outside(target)
        os.makedirs(os.path.dirname(target.rstrip("/")), exist_ok=True)
        kind = words[1] if len(words) > 1 else ""
        if target.endswith("/"):
            os.makedirs(target, exist_ok=True)
        elif kind == "->":
            os.symlink(words[2], target)
        elif kind == "=>":
            os.link(self.path(words[2]), target)
        else:
            open(target, "w").write(words[2].encode().decode("unicode_escape") if kind == "=" else "k" * int(kind or 0))

    def note_outside(self, target):
        """What a scenario makes outside its folder goes afterwards, from the highest folder it made."""
        if target.startswith(self.root + "/"):
            return
        top = target.rstrip("/")
        while not os.path.lexists(os.path.dirname(top)):
            top = os.path.dirname(top)
        self.outside.append(top)

    def json(self, words):
        value = json.loads(self.result.stdout)
        for key, name in re.findall(r"\[([^\]]+)\]|([^.\[\]]+)", words[0]):
            key = key or name
            if isinstance(value, list) and not key.isdigit():
                value = next((item for item in value if item.get("id") == key), None)
            elif isinstance(value, (list, dict)) and (key in value if isinstance(value, dict) else int(key) < len(value)):
                value = value[int(key) if isinstance(value, list) else key]
            else:
                value = None
            if value is None:
                break
        op, expected = words[1], " ".join(words[2:])
        if op == "absent":
            ok = value is None
        elif op == "count":
            ok = value is not None and len(value) == int(expected)
        elif op == "~":
            ok = isinstance(value, str) and re.search(expected, value)
        else:
            try:
                ok = value == json.loads(expected)
            except json.JSONDecodeError:
                ok = value == expected
        if not ok:
            raise Failure(f"{words[0]} is {json.dumps(value)}")

    def step(self, line):
        verb, _, rest = line.partition(" ")
        words = shlex.split(self.expand(rest)) if verb in ("kelvo", "nobody", "env", "offers", "git") else self.expand(rest).split()
        if verb == "mk":
            self.make(self.expand(rest))
        elif verb == "age":
            when = time.time() - int(words[0][:-1]) * {"d": 86400, "h": 3600, "m": 60}[words[0][-1]]
            everything = [self.root] + [os.path.join(f, n) for f, ds, fs in os.walk(self.root) for n in ds + fs]
            paths = [self.path(p) for p in words[1:]] or everything
            for p in paths:
                os.utime(p, (when, when), follow_symlinks=False)
        elif verb == "mode":
            for p in words[1:]:
                os.chmod(self.path(p), int(words[0], 8))
        elif verb == "own":  # only root gives files away; any other runner is the one `nobody` runs as
            for top, folders, files in itertools.chain(*(os.walk(self.path(p)) for p in words if os.geteuid() == 0)):
                for name in [top] + [os.path.join(top, n) for n in folders + files]:
                    os.lchown(name, 65534, 65534)
        elif verb == "env":
            for word in words:
                name, has, value = word.partition("=")
                self.env.pop(name, None) if not has else self.env.__setitem__(name, value)
        elif verb == "requires":
            if words != ["root"]:
                raise Failure(f"unknown requirement {rest!r}")
            if os.geteuid() != 0:
                raise Skip("needs root")
        elif verb == "process":
            os.makedirs(os.path.dirname(self.path(words[0])), exist_ok=True)
            os.symlink("/bin/sh", self.path(words[0]))
            child = subprocess.Popen([self.path(words[0]), "-c", "echo ready; read line"],
                                     stdin=subprocess.PIPE, stdout=subprocess.PIPE)
            child.stdout.readline()  # the shell runs under its name once it speaks
            self.processes[words[0]] = child
        elif verb == "stop":
            child = self.processes.pop(words[0])
            child.stdin.close()
            child.wait()
        elif verb == "git":  # in a folder of the tree, with none of the machine's settings
            os.makedirs(self.path(words[0]), exist_ok=True)
            subprocess.run(["git", "-C", self.path(words[0]), "-c", "user.name=k", "-c", "user.email=k@k",
                            "-c", "init.defaultBranch=main"] + words[1:], check=True, stdout=subprocess.DEVNULL,
                           env={"PATH": os.environ["PATH"], "HOME": self.root, "GIT_CONFIG_NOSYSTEM": "1"})
        elif verb == "set":
            self.vars[words[0]] = " ".join(words[1:])
        elif verb in ("kelvo", "nobody"):
            self.run_tool(words if verb == "kelvo" else words[1:], verb == "nobody")
        elif verb == "exit":
            self.expected_exit = int(words[0])
            if self.result.returncode != self.expected_exit:
                raise Failure(f"exit {self.result.returncode}\n{self.result.stdout}{self.result.stderr}")
        elif verb in ("out", "err"):
            text = self.result.stdout if verb == "out" else self.result.stderr
            lines, body = text.split("\n"), self.expand(rest)
            found = [l for l in lines if re.search(body[2:], l)] if body[:2] in ("~ ", "! ") else [l for l in lines if l == body]
            if bool(found) == body.startswith("! "):
                raise Failure(f"{verb} {'has' if found else 'lacks'} {body!r}:\n{text}")
        elif verb == "same":
            if self.result.stdout != self.previous.stdout:
                raise Failure(f"standard output differs from the run before:\n{self.previous.stdout}\n---\n{self.result.stdout}")
        elif verb == "json":
            self.json(words)
        elif verb == "offers":
            plan = {t["id"]: t["preselected"] for t in json.loads(self.result.stdout)["targets"]}
            wanted = {w.lstrip("+-"): w[0] for w in words}
            wrong = {i for i in set(plan) | set(wanted)
                     if i not in plan or i not in wanted or wanted[i] in "+-" and plan[i] != (wanted[i] == "+")}
            if wrong:
                raise Failure(f"offers differ at {sorted(wrong)}: {plan}")
        elif verb == "removed":
            gone = [p.rstrip("/") for p in words]
            kept = [e for e in self.before if not any(e.split(" -> ")[0].rstrip("/") == g or e.startswith(g + "/") for g in gone)]
            if listing(self.root) != kept:
                raise Failure(f"the tree differs: gone {sorted(set(kept) - set(listing(self.root)))}, "
                              f"new {sorted(set(listing(self.root)) - set(kept))}")
        elif verb in ("exists", "missing"):
            for p in words:
                if os.path.lexists(p if p.startswith("/") else self.path(p)) != (verb == "exists"):
                    raise Failure(f"{p} {'is missing' if verb == 'exists' else 'exists'}")
        else:
            raise Failure(f"unknown step {verb!r}")

    def close(self):
        for child in self.processes.values():
            child.kill()
            child.wait()
        for path in self.outside + [self.root]:
            subprocess.run(["chmod", "-R", "u+rwx", path], stderr=subprocess.DEVNULL)
            shutil.rmtree(path, ignore_errors=True) if os.path.isdir(path) else os.path.lexists(path) and os.remove(path)


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
                scenario.finish_run()
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
