"""Installs the build and uses it as other projects do.

usage: install_test.py tree CMAKE BUILD PREFIX LIST [ABSENT]
       install_test.py cmake PREFIX CONSUMER EXAMPLE NAMES CMAKE GENERATOR CC CXX NM
       install_test.py pkg-config PREFIX CONSUMER EXAMPLE CC CXX
       install_test.py header PREFIX NAMES CXX NM
       install_test.py tool PREFIX EXAMPLE
       install_test.py packages CPACK BUILD EXAMPLE
       install_test.py abi BASELINE [ABIDIFF [MODULE]]

Exit status 0 if everything is correct, 77 if a tool that the check needs is missing.
"""
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile

SKIPPED = 77
MODULE = "lib/quorl-js/quorljs.so"
# Parts of the binary interface to record: nothing about this machine, no source locations.
RECORDING = ("--exported-interfaces-only", "--no-show-locs", "--no-parameter-names",
             "--no-corpus-path", "--no-comp-dir-path", "--no-elf-needed", "--type-id-style hash")


def run(*command, **options):
    """Run the command, fail unless it succeeds, and return its standard output."""
    done = subprocess.run([str(word) for word in command], check=False, stdout=subprocess.PIPE,
                          encoding="utf-8", **options)
    if done.returncode != 0:
        sys.exit("%s%s: status %d" % (done.stdout, " ".join(map(str, command)), done.returncode))
    return done.stdout


def skip(reason):
    print("skipped: " + reason)
    return SKIPPED


def names_in(path):
    names = set(pathlib.Path(path).read_text().split())
    assert len(names) > 80, path
    return names


def differences(found, promised):
    return ["too many: " + name for name in sorted(found - promised)] + \
           ["missing: " + name for name in sorted(promised - found)]


def report(faults, good):
    print("\n".join(faults) or good)
    return 1 if faults else 0


def check_tree(cmake, build, prefix, list_path, *absent):
    """Install under one prefix and move the result to another, where the other checks use it."""
    prefix = pathlib.Path(prefix)
    staging = prefix.with_name("staging")
    for folder in (prefix, staging):
        shutil.rmtree(folder, ignore_errors=True)
    run(cmake, "--install", build, "--prefix", staging)
    staging.rename(prefix)
    installed = [path for path in prefix.rglob("*") if not path.is_dir()]
    found = {path.relative_to(prefix).as_posix() for path in installed}
    # This file's name contains the configuration.
    found = {re.sub(r"Targets-\w+\.cmake$", "Targets-CONFIG.cmake", name) for name in found}
    promised = set(pathlib.Path(list_path).read_text().split()) - set(absent)
    faults = differences(found, promised)
    # No text file mentions where it was built or installed.
    for path in installed:
        data = path.read_bytes()
        if data[:4] != b"\x7fELF" and (os.fsencode(build) in data or b"staging" in data):
            faults.append("names a folder of this machine: %s" % path)
    return report(faults, "%d files" % len(found))


def run_programs(prefix, folder, example):
    for program in ("surface", "surface_from_header"):
        with tempfile.TemporaryDirectory() as scratch:
            run(folder / program, scratch)
    run(folder / "open_module", example)
    # The program that links the module finds it where it was installed.
    loaded = re.search(r"quorljs\.so => (.+) \(0x", run("ldd", folder / "surface"))
    assert loaded and os.path.samefile(loaded.group(1), prefix / MODULE), loaded


def check_cmake(prefix, consumer, example, names, cmake, generator, cc, cxx, nm):
    prefix = pathlib.Path(prefix)
    with tempfile.TemporaryDirectory() as folder:
        build = pathlib.Path(folder)
        run(cmake, "-S", consumer, "-B", build, "-G", generator, "-DCMAKE_PREFIX_PATH=%s" % prefix,
            "-DCMAKE_C_COMPILER=" + cc, "-DCMAKE_CXX_COMPILER=" + cxx)
        run(cmake, "--build", build)
        run_programs(prefix, build, example)
        # The hand-written declarations are complete: the program uses every promised name.
        table = run(nm, "-D", "--undefined-only", build / "surface")
        taken = {line.split()[-1] for line in table.splitlines()}
    faults = ["not used: " + name for name in sorted(names_in(names) - taken)]
    return report(faults, "%d names used" % len(names_in(names)))


def check_pkg_config(prefix, consumer, example, cc, cxx):
    prefix, consumer = pathlib.Path(prefix), pathlib.Path(consumer)
    if shutil.which("pkg-config") is None:
        return skip("there is no pkg-config")
    env = dict(os.environ, PKG_CONFIG_PATH=str(prefix / "lib/pkgconfig"))

    def ask(*options):
        # Quoted for a shell, for folders with blanks in their names.
        return shlex.split(run("pkg-config", *options, "quorl-js", env=env))

    run("pkg-config", "--exact-version=1.0.0", "quorl-js", env=env)
    plugin = ask("--variable=plugin")
    assert len(plugin) == 1 and os.path.samefile(plugin[0], prefix / MODULE), plugin
    plugindir = ask("--variable=plugindir")
    assert os.path.samefile(plugindir[0], prefix / "lib/quorl-js"), plugindir
    with tempfile.TemporaryDirectory() as folder:
        build = pathlib.Path(folder)
        strict = ["-Wall", "-Wextra", "-Werror"]
        flags = [*ask("--cflags"), "-fPIC", "-std=c++17", *strict, consumer / "surface.cpp"]
        libs = ask("--libs")
        run(cxx, *flags, "-o", build / "surface", *libs)
        run(cxx, *flags, "-DSURFACE_FROM_HEADER", "-o", build / "surface_from_header", *libs)
        run(cc, *ask("--cflags"), '-DQUORL_PLUGIN="%s"' % plugin[0], *strict,
            consumer / "open_module.c", "-o", build / "open_module", "-ldl")
        # Without -fPIC the program would silently use a copy of the data; the header prevents that.
        refused = subprocess.run([cxx, *ask("--cflags"), "-fPIE", "-DSURFACE_FROM_HEADER",
                                  "-std=c++17", "-fsyntax-only", consumer / "surface.cpp"],
                                 check=False, stderr=subprocess.PIPE, encoding="utf-8")
        assert refused.returncode != 0 and "compile with -fPIC" in refused.stderr, refused
        run_programs(prefix, build, example)
    return report([], "built and run")


def definitions_of(header):
    """Return the header's text with each declaration turned into a definition."""
    used = '__attribute__((visibility("default"), used))'
    text = re.sub(r"(?m)^#define QUORL_API .*", "#define QUORL_API " + used, header)
    text, data = re.subn(r"extern QUORL_DATA ", "QUORL_API ", text)
    text, functions = re.subn(r"(?s)(QUORL_API [^;{}]*\));", r"\1 { __builtin_trap(); }", text)
    return text, data, functions


def check_header(prefix, names, cxx, nm):
    """Check that the header declares exactly the promised names."""
    include = pathlib.Path(prefix) / "include/quorl-js"
    text, data, functions = definitions_of((include / "quorl_js.h").read_text())
    c_text = (include / "plugin/plugin_api.h").read_text()
    c_names = set(re.findall(r"(?m)^[\w *]*?\b(\w+)\([^)]*\);", c_text))
    with tempfile.TemporaryDirectory() as folder:
        source, module = pathlib.Path(folder) / "a.cpp", pathlib.Path(folder) / "a.so"
        source.write_text(text)
        run(cxx, "-std=c++17", "-fPIC", "-shared", "-fvisibility=hidden", "-I", include, "-w",
            source, "-o", module)
        table = run(nm, "-D", "--defined-only", module)
    # Templates of the standard library that were instantiated are not declarations of the header.
    found = {line.split()[-1] for line in table.splitlines()}
    found = {name for name in found if not re.match(r"_ZN?K?St|_ZNK?9__gnu", name)} | c_names
    print("%d functions, %d data, and in C %s" % (functions, data, sorted(c_names)))
    assert functions > 0 and data > 0 and c_names, "nothing was read from the headers"
    return report(differences(found, names_in(names)), "as promised")


def check_tool(prefix, example):
    prefix, example = pathlib.Path(prefix), pathlib.Path(example)
    tool = prefix / "bin/quorl-js"
    answer = run(tool, example)
    contents = re.findall(r'"contents": "(.*)"', answer)
    assert contents == ["greet.js", "namespace global", "Greet", "function Greeter(name) {",
                        "var label = name;", "let total = 1;"], contents
    assert "Quorl JavaScript Parser Plugin v1.0" in run(tool, "--version")
    # The program also finds its module through a symbolic link.
    with tempfile.TemporaryDirectory() as folder:
        link = pathlib.Path(folder) / "quorl-js"
        link.symlink_to(tool)
        assert run(link, example) == answer
    # Without its module it reports where it searched.
    with tempfile.TemporaryDirectory() as folder:
        copy = pathlib.Path(folder) / "bin/quorl-js"
        copy.parent.mkdir()
        shutil.copy(tool, copy)
        lost = subprocess.run([copy, example], check=False, stderr=subprocess.PIPE,
                              stdout=subprocess.PIPE, encoding="utf-8")
    assert lost.returncode == 2 and "lib/quorl-js/quorljs.so" in lost.stderr, lost
    return report([], "%d records" % len(contents))


def check_abi(baseline, abidiff=None, module=None):
    if abidiff is None or abidiff.endswith("-NOTFOUND"):
        return skip("there is no abidiff; it is in Debian's abigail-tools")
    if module is None:
        return skip("the recorded interface is that of a module built with g++ 12 for x86-64")

    def compare(recorded):
        return subprocess.run([abidiff, recorded, module], check=False, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, encoding="utf-8")

    # The check itself must fail for a missing name and for a record of another size.
    text = pathlib.Path(baseline).read_text()
    wrong = [text.replace("name='currentIndex'", "name='formerIndex'"),
             re.sub(r"(class-decl name='ObjectBranch' size-in-bits=)'\d+'", r"\1'64'", text)]
    with tempfile.TemporaryDirectory() as folder:
        for changed in wrong:
            assert changed != text
            other = pathlib.Path(folder) / "other.abi"
            other.write_text(changed)
            assert compare(other).returncode != 0, "a changed interface passes"
    done = compare(baseline)
    if done.returncode == 0 and not done.stdout:
        return report([], "no change of the binary interface")
    print("An intended change is recorded by:\n  abidw %s --out-file %s %s" %
          (" ".join(RECORDING), baseline, module))
    return report([done.stdout], "")


def install_packages(packages, root):
    """Install the packages below root and return a function that removes them. Only the superuser
    may run the ldconfig call that comes with them; for others they are unpacked."""
    if os.geteuid() != 0:
        for package in packages:
            run("dpkg-deb", "-x", package, root)
        return lambda: shutil.rmtree(root)
    for folder in ("info", "updates"):
        (root / "var/lib/dpkg" / folder).mkdir(parents=True)
    (root / "var/lib/dpkg/status").touch()
    # The dependencies of the packages, and the shell for their scripts, are outside of root.
    dpkg = ["dpkg", "--root=%s" % root, "--log=/dev/null", "--force-depends",
            "--force-script-chrootless"]
    run(*dpkg, "--install", *packages, stderr=subprocess.DEVNULL)
    return lambda: run(*dpkg, "--purge", "python3-quorl-js", "quorl-js", "quorl-js-dev",
                       "quorl-js-plugin", stderr=subprocess.DEVNULL)


def check_packages(cpack, build, example):
    for tool in ("dpkg-deb", "dpkg-shlibdeps", "lintian"):
        if shutil.which(tool) is None:
            return skip("there is no " + tool)
    with tempfile.TemporaryDirectory() as folder:
        out = pathlib.Path(folder)
        before = os.umask(0o077)  # the packages must be readable all the same
        run(cpack, "-G", "DEB", "-B", out, "--config", pathlib.Path(build) / "CPackConfig.cmake")
        os.umask(before)
        packages = sorted(out.glob("*.deb"))
        listed = [line for package in packages
                  for line in run("dpkg-deb", "-c", package).splitlines()]
        closed = [line for line in listed if line[7] != "r" or line[0] == "d" and line[9] != "x"]
        assert listed and not closed, closed
        depends = {run("dpkg-deb", "-f", package, "Package").strip():
                   run("dpkg-deb", "-f", package, "Depends") for package in packages}
        version = run("dpkg-deb", "-f", packages[0], "Version").strip()
        same_module = "quorl-js-plugin (= %s)" % version
        faults = differences(set(depends), {"python3-quorl-js", "quorl-js", "quorl-js-dev", "quorl-js-plugin"})
        faults += [name + " takes any module" for name in ("quorl-js", "quorl-js-dev")
                   if same_module not in depends[name]]
        faults += [name + " does not need the standard library"
                   for name in ("quorl-js", "quorl-js-plugin") if "libstdc++6" not in depends[name]]
        done = subprocess.run(["lintian", "--allow-root", *packages], check=False,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8")
        print(done.stdout, end="")
        faults += [line for line in done.stdout.splitlines() if line.startswith(("E:", "W:"))]
        faults += ["python3-quorl-js does not need " + package for package in ("python3", "quorl-js")
                   if package not in re.split("[, ]+", depends["python3-quorl-js"])]
        faults += ["quorl-js does not need " + library for library in ("libgit2", "libsqlite3-0", "libdeflate0")
                   if library not in depends["quorl-js"]]
        # lintian exits with 2 both for errors that it found and for its own.
        assert done.returncode in ((0, 2) if faults else (0,)), done.returncode
        root = out / "root"
        remove = install_packages(packages, root)
        assert run(root / "usr/bin/quorl-js", example).startswith("[\n  {\n")
        env = dict(os.environ, PATH="%s:%s" % (root / "usr/bin", os.environ["PATH"]),
                   PYTHONPATH=str(root / "usr/lib/python3/dist-packages"), PYTHONNOUSERSITE="1")
        program = "import quorl_js, sys; print(quorl_js.outline(sys.argv[1]).items[0].name)"
        printed = run(sys.executable, "-B", "-c", program, example, env=env)
        assert printed == "Greeter\n", printed
        remove()
        left = [path.relative_to(root).as_posix() for path in root.rglob("*") if path.is_file()]
        faults += ["left behind: " + name for name in left if not name.startswith("var/lib/dpkg/")]
        return report(faults, "%d packages" % len(packages))


CHECKS = {"tree": check_tree, "cmake": check_cmake, "pkg-config": check_pkg_config,
          "header": check_header, "tool": check_tool, "packages": check_packages,
          "abi": check_abi}

if __name__ == "__main__":
    # The comparison behind every check must detect both kinds of difference.
    assert differences({"a", "b"}, {"a", "c"}) == ["too many: b", "missing: c"]
    sys.exit(CHECKS[sys.argv[1]](*sys.argv[2:]))
