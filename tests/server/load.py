"""Load test of zanfe-restconf with wrk: keep-alive connections on a keyed row and on a
whole table, then the same HTTP library serving the keyed row's body as a constant
(restconf-constant), in the same run. Fails on any socket error, any non-2xx answer, a
server that died, or resident memory that grows between the first and the last quarter of
a run. Prints a markdown table of requests per second and p50/p99 latency.

    load.py RESTCONF CONSTANT [--seconds S] [--connections C] [--threads N]
"""
import argparse
import os
import re
import subprocess
import sys
import tempfile
import threading
import time
import urllib.request


def start(cmd):
    p = subprocess.Popen(cmd, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    line = p.stdout.readline()
    m = re.match(r"listening on http://127\.0\.0\.1:(\d+)$", line.strip())
    if not m:
        p.kill()
        sys.exit(f"load: {cmd[0]} did not start: {line!r}")
    return p, int(m.group(1))


def rss_kb(pid):
    with open(f"/proc/{pid}/status") as fh:
        return int(re.search(r"VmRSS:\s+(\d+)", fh.read()).group(1))


def millis(text):
    n, unit = re.fullmatch(r"([\d.]+)(us|ms|s|m|h)", text).groups()
    return float(n) * {"us": 0.001, "ms": 1, "s": 1000, "m": 60_000, "h": 3_600_000}[unit]


def wrk(proc, url, seconds, connections):
    samples = []
    done = threading.Event()

    def sample():
        while not done.wait(seconds / 40):
            samples.append(rss_kb(proc.pid))

    t = threading.Thread(target=sample)
    t.start()
    out = subprocess.run(["wrk", "-t2", f"-c{connections}", f"-d{seconds}s", "--timeout", "10s", "--latency", url],
                         capture_output=True, text=True, check=True).stdout
    done.set()
    t.join()
    r = {"rps": float(re.search(r"Requests/sec:\s+([\d.]+)", out).group(1)),
         "p50": millis(re.search(r"^\s+50%\s+(\S+)[ \t]*$", out, re.M).group(1)),
         "p99": millis(re.search(r"^\s+99%\s+(\S+)[ \t]*$", out, re.M).group(1)),
         "requests": int(re.search(r"(\d+) requests in", out).group(1)),
         "non2xx": int(m.group(1)) if (m := re.search(r"Non-2xx or 3xx responses: (\d+)", out)) else 0,
         "errors": sum(int(x) for x in m.groups()) if (m := re.search(
             r"Socket errors: connect (\d+), read (\d+), write (\d+), timeout (\d+)", out)) else 0,
         "error_kinds": m.group(0) if m else ""}
    q = max(1, len(samples) // 4)
    r["rss_first"] = sum(samples[:q]) / q if samples else 0
    r["rss_last"] = sum(samples[-q:]) / q if samples else 0
    return r


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("restconf")
    ap.add_argument("constant")
    ap.add_argument("--seconds", type=int, default=20)
    ap.add_argument("--connections", type=int, default=64)
    ap.add_argument("--threads", type=int, default=64)
    a = ap.parse_args()

    keyed = "/restconf/data/zan-config:vrf=red?depth=1"
    table = "/restconf/data/zan-config:vrf"
    # Room for wrk's connections of one run while the last run's are let go.
    server, port = start([a.restconf, "--port", "0", "--threads", str(a.threads), "--keep-alive", "1000000",
                          "--max-connections", str(2 * a.connections), "--access-log", "/dev/null"])
    results = {}
    failed = []
    try:
        body = urllib.request.urlopen(f"http://127.0.0.1:{port}{keyed}").read()
        for name, path in (("keyed row", keyed), ("whole table", table)):
            results[name] = wrk(server, f"http://127.0.0.1:{port}{path}", a.seconds, a.connections)
        if server.poll() is not None:
            failed.append("the server died")
    finally:
        server.terminate()
        server.wait()
    with tempfile.NamedTemporaryFile("wb", delete=False) as fh:
        fh.write(body)
    base, bport = start([a.constant, "--threads", str(a.threads), fh.name])
    try:
        results["constant body"] = wrk(base, f"http://127.0.0.1:{bport}{keyed}", a.seconds, a.connections)
    finally:
        base.terminate()
        base.wait()
        os.unlink(fh.name)

    print(f"{a.connections} keep-alive connections, {a.seconds} s each, {a.threads} server threads, wrk -t2\n")
    print("| target | requests/s | p50 ms | p99 ms | requests | errors | non-2xx | RSS first/last quarter kB |")
    print("|---|---:|---:|---:|---:|---:|---:|---|")
    for name, r in results.items():
        print(f"| {name} | {r['rps']:.0f} | {r['p50']:.2f} | {r['p99']:.2f} | {r['requests']} | {r['errors']} | "
              f"{r['non2xx']} | {r['rss_first']:.0f} / {r['rss_last']:.0f} |")
        if r["errors"] or r["non2xx"]:
            failed.append(f"{name}: {r['errors']} socket errors ({r['error_kinds']}), {r['non2xx']} non-2xx answers")
        # A run of a few seconds is mostly the threads' warm-up: memory is judged on long runs.
        if a.seconds >= 10 and r["rss_last"] > r["rss_first"] * 1.10 + 2048:
            failed.append(f"{name}: resident memory grew from {r['rss_first']:.0f} to {r['rss_last']:.0f} kB")
    ratio = results["keyed row"]["rps"] / results["constant body"]["rps"]
    print(f"\nkeyed row / constant body throughput: {ratio:.0%}")
    for f in failed:
        print("load: " + f, file=sys.stderr)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
