"""zanfe-restconf against real clients (Python's http.client and curl), on a port the
server picks itself on the loopback address: every route, every error status with its
body, authentication and redaction per role, ETag and 304, TLS with a certificate made
here, SIGHUP reloads whole or not at all, SIGTERM stops. Data answers are compared with
what `zanfe get/dump --format rfc7951` prints for the same rows and checked by yanglint.

Run by ctest with RESTCONF, ZANFE, YANGLINT, YANG_MODULE and ZAN_SCHEMA in the environment.
"""
import base64
import crypt
import http.client
import json
import os
import re
import signal
import socket
import ssl
import subprocess
import sys
import tempfile
import threading
import time
import unittest
import urllib.parse

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [os.path.join(HERE, "..", "tool"), os.path.join(HERE, "..", "..", "gen")]
sys.dont_write_bytecode = True
import catalogue  # noqa: E402
import yang_config  # noqa: E402

RESTCONF = os.environ.get("RESTCONF", "zanfe-restconf")
ZANFE = os.environ.get("ZANFE", "zanfe")
YANGLINT = os.environ.get("YANGLINT", "yanglint")
MODULE = os.environ.get("YANG_MODULE", "")
JSON = "application/yang-data+json"
USERS = {"ada": ("ada-pw", "admin"), "rex": ("rex-pw", "reader")}


def run(*args, check=True):
    p = subprocess.run(args, capture_output=True, text=True)
    if check and p.returncode != 0:
        raise AssertionError(f"{' '.join(args)} failed ({p.returncode}): {p.stderr}")
    return p


def auth(user):
    pw = USERS[user][0]
    return {"Authorization": "Basic " + base64.b64encode(f"{user}:{pw}".encode()).decode()}


def url_of(tool_path):
    """/vrf[k=red]/vrf_afi[a=1] -> zan-config:vrf=red/vrf_afi=1, keys percent-encoded."""
    out = []
    for i, seg in enumerate(re.findall(r"/([^/\[]+)((?:\[(?:'(?:[^']|'')*'|[^\]]*)\])*)", tool_path)):
        name, keys = seg
        vals = []
        for k in re.findall(r"\[[^=]+=('(?:[^']|'')*'|[^\]]*)\]", keys):
            if k.startswith("'"):
                k = k[1:-1].replace("''", "'")
            vals.append(urllib.parse.quote(k, safe=""))
        out.append(("zan-config:" if i == 0 else "") + name + ("=" + ",".join(vals) if vals else ""))
    return "/".join(out)


class Server:
    def __init__(self, tmp, *extra, tls=False):
        self.log = os.path.join(tmp, f"access-{time.monotonic_ns()}.log")
        self.proc = subprocess.Popen([RESTCONF, "--port", "0", "--yang", MODULE, "--access-log", self.log, *extra],
                                     stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        line = self.proc.stdout.readline()
        m = re.match(r"listening on (https?)://127\.0\.0\.1:(\d+)$", line.strip())
        if not m:
            self.proc.kill()
            raise AssertionError(f"no listening line: {line!r} {self.proc.stderr.read()}")
        self.port = int(m.group(2))
        self.tls = tls

    def conn(self):
        if self.tls:
            ctx = ssl.create_default_context()
            ctx.check_hostname = False
            ctx.verify_mode = ssl.CERT_NONE
            return http.client.HTTPSConnection("127.0.0.1", self.port, context=ctx, timeout=20)
        return http.client.HTTPConnection("127.0.0.1", self.port, timeout=20)

    def request(self, method, path, headers=None, body=None):
        c = self.conn()
        c.request(method, path, body=body, headers=headers or {})
        r = c.getresponse()
        data = r.read().decode()
        c.close()
        return r.status, {k.lower(): v for k, v in r.getheaders()}, data

    def stop(self):
        if self.proc.poll() is None:
            self.proc.send_signal(signal.SIGTERM)
            try:
                self.proc.wait(20)
            except subprocess.TimeoutExpired:
                self.proc.kill()
                self.proc.wait()
        self.proc.stdout.close()
        self.proc.stderr.close()
        return self.proc.returncode


class RestconfBase(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.tmp = tempfile.TemporaryDirectory()
        cls.users = cls.path("users")
        with open(cls.users, "w") as fh:
            fh.write("# test users\n\n")
            for name, (pw, role) in USERS.items():
                fh.write(f"{name}:{crypt.crypt(pw, crypt.mksalt(crypt.METHOD_SHA512))}:{role}\n")

    @classmethod
    def tearDownClass(cls):
        cls.tmp.cleanup()

    @classmethod
    def path(cls, name):
        return os.path.join(cls.tmp.name, name)

    def assert_error(self, got, status, tag, message_re, path=None):
        code, headers, body = got
        self.assertEqual(code, status, body)
        self.assertTrue(headers["content-type"].startswith(JSON), headers)
        err = json.loads(body)["ietf-restconf:errors"]["error"]
        self.assertEqual(len(err), 1)
        self.assertEqual(err[0]["error-tag"], tag)
        self.assertIn(err[0]["error-type"], ("transport", "rpc", "protocol", "application"))
        self.assertRegex(err[0]["error-message"], message_re)
        if path is not None:
            self.assertEqual(err[0].get("error-path"), path)

    def lint(self, name, doc):
        f = self.path(name)
        with open(f, "w") as fh:
            fh.write(doc)
        p = run(YANGLINT, "-t", "config", MODULE, f, check=False)
        self.assertEqual(p.returncode, 0, p.stderr)


class Routes(RestconfBase):
    """The default configuration, served to an admin (who sees what zanfe prints)."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.srv = Server(cls.tmp.name, "--users", cls.users)
        dump = json.loads(run(ZANFE, "dump", "--json").stdout)
        cls.row_paths = list(dump)

    @classmethod
    def tearDownClass(cls):
        cls.srv.stop()
        super().tearDownClass()

    def get(self, path, user="ada", headers=None, method="GET", body=None):
        h = dict(auth(user)) if user else {}
        h.update(headers or {})
        return self.srv.request(method, path, h, body)

    def test_api_root_version_and_host_meta(self):
        code, h, body = self.get("/.well-known/host-meta")
        self.assertEqual((code, h["content-type"]), (200, "application/xrd+xml"))
        self.assertIn("<Link rel='restconf' href='/restconf'/>", body)
        code, h, body = self.get("/restconf")
        self.assertEqual(code, 200)
        self.assertEqual(json.loads(body)["ietf-restconf:restconf"]["yang-library-version"], "2016-06-21")
        code, h, body = self.get("/restconf/yang-library-version")
        self.assertEqual(json.loads(body), {"ietf-restconf:yang-library-version": "2016-06-21"})

    def test_module_is_listed_and_retrievable(self):
        code, h, body = self.get("/restconf/data/ietf-yang-library:modules-state")
        self.assertEqual(code, 200, body)
        mods = json.loads(body)["ietf-yang-library:modules-state"]["module"]
        self.assertEqual([m["name"] for m in mods], ["zan-config"])
        with open(MODULE) as fh:
            text = fh.read()
        self.assertIn(f'revision {mods[0]["revision"]}', text.replace('"', ""))
        self.assertIn(f'namespace "{mods[0]["namespace"]}"', text)
        self.assertIn("nacm:default-deny-all;", text)
        schema = urllib.parse.urlparse(mods[0]["schema"])
        self.assertEqual(schema.netloc, f"127.0.0.1:{self.srv.port}")
        code, h, got = self.get(schema.path)
        self.assertEqual((code, h["content-type"]), (200, "application/yang"))
        self.assertEqual(got, text)
        self.assert_error(self.get("/restconf/modules/ietf-interfaces"), 404, "invalid-value", "no module")

    def test_whole_datastore_is_the_dump(self):
        code, h, body = self.get("/restconf/data")
        self.assertEqual(code, 200, body)
        self.assertEqual(body, run(ZANFE, "dump", "--format", "rfc7951").stdout)
        self.lint("all.json", body)

    def test_every_row_at_depth_1_is_what_zanfe_get_prints(self):
        self.assertGreater(len(self.row_paths), 5)
        for p in self.row_paths:
            with self.subTest(p):
                code, h, body = self.get("/restconf/data/" + url_of(p) + "?depth=1")
                self.assertEqual(code, 200, body)
                self.assertEqual(h["content-type"], JSON)
                self.assertEqual(body, run(ZANFE, "get", p, "--format", "rfc7951").stdout)

    def test_a_list_without_keys_and_a_subtree(self):
        top = self.row_paths[0].split("[")[0]
        code, h, body = self.get("/restconf/data/zan-config:" + top.strip("/") + "?depth=1")
        self.assertEqual(code, 200, body)
        self.assertEqual(body, run(ZANFE, "get", top, "--format", "rfc7951").stdout)
        # Unbounded depth: the row with every row below it.
        nested = [p for p in self.row_paths if p.count("/") >= 2]
        self.assertTrue(nested)
        parent = nested[0].rsplit("/", 1)[0]
        code, h, body = self.get("/restconf/data/" + url_of(parent))
        self.assertEqual(code, 200, body)
        shallow = self.get("/restconf/data/" + url_of(parent) + "?depth=1")[2]
        self.assertGreater(len(body), len(shallow))
        self.lint("subtree.json", body)
        code, h, body = self.get("/restconf/data/" + url_of(parent) + "?content=nonconfig")
        self.assertEqual((code, body), (200, "{}\n"))
        code, h, same = self.get("/restconf/data/" + url_of(parent) + "?content=config")
        self.assertEqual(same, self.get("/restconf/data/" + url_of(parent))[2])

    def test_fields_through_to_vlist(self):
        for p in self.row_paths:
            if p.count("/") != 1:
                continue
            full = json.loads(self.get("/restconf/data/" + url_of(p) + "?depth=1")[2])
            entry = next(iter(full.values()))[0]
            leaves = [k for k, v in entry.items() if not isinstance(v, (dict, list))]
            if len(leaves) >= 3:
                break
        self.assertGreaterEqual(len(leaves), 3)
        code, h, body = self.get("/restconf/data/" + url_of(p) + "?fields=" + leaves[-1])
        self.assertEqual(code, 200, body)
        got = next(iter(json.loads(body).values()))[0]
        self.assertEqual(got[leaves[-1]], entry[leaves[-1]])
        self.assertLess(len(got), len(entry))
        self.lint("fields.json", body)
        self.assert_error(self.get("/restconf/data/" + url_of(p) + "?fields=no_such_attribute"), 400,
                          "invalid-value", "fields: not every name")

    def test_head_has_the_headers_and_no_body(self):
        p = "/restconf/data/" + url_of(self.row_paths[0])
        g = self.get(p)
        code, h, body = self.get(p, method="HEAD")
        self.assertEqual((code, body), (200, ""))
        self.assertEqual(h["etag"], g[1]["etag"])
        self.assertEqual(int(h["content-length"]), len(g[2].encode()))

    def test_etag_last_modified_and_304(self):
        p = "/restconf/data/" + url_of(self.row_paths[0])
        code, h, body = self.get(p)
        self.assertTrue(h["etag"].startswith('"'))
        self.assertRegex(h["last-modified"], r"^\w{3}, \d\d \w{3} \d{4} \d\d:\d\d:\d\d GMT$")
        code, h2, body = self.get(p, headers={"If-None-Match": h["etag"]})
        self.assertEqual((code, body, h2["etag"]), (304, "", h["etag"]))
        code, h2, body = self.get(p, headers={"If-None-Match": '"other"'})
        self.assertEqual(code, 200)

    def test_not_found_names_the_segment(self):
        first = self.row_paths[0]
        name = first.split("[")[0].strip("/")
        self.assert_error(self.get(f"/restconf/data/zan-config:{name}=no-such-key-{name}"), 404, "invalid-value",
                          "no such entry|does not resolve")
        self.assert_error(self.get("/restconf/data/zan-config:nope"), 404, "invalid-value",
                          r"does not resolve: code \d+ at segment 1 'zan-config:nope': ",
                          path="/zan-config:nope")
        nested = [p for p in self.row_paths if p.count("/") >= 2][0]
        url = "/restconf/data/" + url_of(nested.rsplit("/", 1)[0]) + "/nope"
        self.assert_error(self.get(url), 404, "invalid-value", r"at segment 2 'nope': ")
        self.assert_error(self.get("/restconf/data/other-module:x"), 404, "invalid-value", "no module 'other-module'")
        self.assert_error(self.get("/nothing/here"), 404, "invalid-value", "no resource")

    def test_malformed_requests_are_400(self):
        name = self.row_paths[0].split("[")[0].strip("/")
        for path, msg in [("/restconf/data/" + name, "names its module"),
                          ("/restconf/data?depth=0", "depth '0'"),
                          ("/restconf/data?bogus=1", "unknown query parameter 'bogus'"),
                          ("/restconf/data?fields=a(b", r"'\(' without '\)'"),
                          (f"/restconf/data/zan-config:{name}=a,b,c,d,e,f", "key"),
                          (f"/restconf/data/zan-config:{name}/x", "names its keys"),
                          ("/restconf/data/zan-config:a=%zz", "percent-encoding")]:
            with self.subTest(path):
                self.assert_error(self.get(path), 400, "invalid-value", msg)

    def test_every_write_is_405(self):
        for method in ("PUT", "POST", "PATCH", "DELETE"):
            with self.subTest(method):
                got = self.get("/restconf/data/zan-config:x", method=method, body="{}",
                               headers={"Content-Type": JSON})
                self.assert_error(got, 405, "operation-not-supported", "read-only")
        code, h, body = self.get("/restconf/data", method="OPTIONS")
        self.assertEqual((code, h["allow"]), (200, "GET, HEAD, OPTIONS"))

    def test_media_types_406_and_415(self):
        self.assert_error(self.get("/restconf/data", headers={"Accept": "application/yang-data+xml"}), 406,
                          "invalid-value", "Accept")
        for accept in ("application/json", "application/*", "*/*;q=0.5", "text/html, application/yang-data+json"):
            self.assertEqual(self.get("/restconf", headers={"Accept": accept})[0], 200, accept)
        self.assert_error(self.get("/restconf/data", method="PUT", body="x", headers={"Content-Type": "text/plain"}),
                          415, "invalid-value", "text/plain")


    def test_authentication(self):
        self.assert_error(self.get("/restconf", user=None), 401, "access-denied", "authentication required")
        bad = {"Authorization": "Basic " + base64.b64encode(b"ada:wrong").decode()}
        self.assert_error(self.srv.request("GET", "/restconf", bad), 401, "access-denied", "wrong user name")
        ghost = {"Authorization": "Basic " + base64.b64encode(b"ghost:ada-pw").decode()}
        self.assert_error(self.srv.request("GET", "/restconf", ghost), 401, "access-denied", "wrong user name")
        self.assert_error(self.srv.request("GET", "/restconf", {"Authorization": "Bearer x"}), 401,
                          "access-denied", "only HTTP Basic")
        code, h, _ = self.get("/restconf", user=None)
        self.assertIn("Basic", h["www-authenticate"])

    def test_limits_answer_with_a_body(self):
        code, h, body = self.get("/restconf/data?" + "a" * 10000)
        self.assertIn(code, (400, 414))
        self.assertIn("ietf-restconf:errors", body)
        got = self.get("/restconf/data/zan-config:x", method="PUT", body="x" * 100000,
                       headers={"Content-Type": JSON})
        self.assertEqual(got[0], 413)
        self.assertIn("too-big", got[2])

    def test_curl(self):
        p = "/restconf/data/" + url_of(self.row_paths[0]) + "?depth=1"
        out = run("curl", "-sS", "-u", "ada:ada-pw", "-H", "Accept: " + JSON, "-w", "\n%{http_code}",
                  f"http://127.0.0.1:{self.srv.port}{p}").stdout
        body, code = out.rsplit("\n", 1)
        self.assertEqual(code, "200")
        self.assertEqual(body, run(ZANFE, "get", self.row_paths[0], "--format", "rfc7951").stdout)
        out = run("curl", "-sS", "-u", "ada:ada-pw", "-X", "DELETE", "-w", "\n%{http_code}",
                  f"http://127.0.0.1:{self.srv.port}/restconf/data").stdout
        self.assertTrue(out.endswith("\n405"), out)
        out = run("curl", "-sSI", "-u", "ada:ada-pw", f"http://127.0.0.1:{self.srv.port}/restconf/data").stdout
        self.assertRegex(out, r"(?i)^HTTP/1.1 200")
        self.assertRegex(out, r"(?im)^etag: ")

    def test_access_log_has_a_line_per_request(self):
        self.get("/restconf/yang-library-version?x")
        want = re.compile(r'^127\.0\.0\.1 - ada \[.*\] "GET /restconf/yang-library-version\?x HTTP/1.1" 400 \d+$')
        for _ in range(100):   # the line is written once the answer has gone out
            with open(self.srv.log) as fh:
                lines = fh.read().splitlines()
            if any(want.match(line) for line in lines):
                return
            time.sleep(0.05)
        self.fail(lines[-5:])


class Redaction(RestconfBase):
    """A configuration that touches every table: readers lose the secret attributes, and only those."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cat = catalogue.load(os.environ["ZAN_SCHEMA"])
        cls.db = cls.path("generated.json")
        with open(cls.db, "w") as fh:
            json.dump(yang_config.config(cat), fh)
        cls.srv = Server(cls.tmp.name, "--users", cls.users, "--db", cls.db)

    @classmethod
    def tearDownClass(cls):
        cls.srv.stop()
        super().tearDownClass()

    @staticmethod
    def leaves(doc, prefix=""):
        out = set()
        if isinstance(doc, dict):
            for k, v in doc.items():
                out |= Redaction.leaves(v, prefix + "/" + k.split(":")[-1])
        elif isinstance(doc, list) and doc and isinstance(doc[0], dict):
            for i, e in enumerate(doc):
                out |= Redaction.leaves(e, prefix + f"[{i}]")
        else:
            out.add(prefix)
        return out

    def test_reader_sees_all_but_the_secrets(self):
        code, _, admin = self.srv.request("GET", "/restconf/data", auth("ada"))
        self.assertEqual(code, 200)
        self.assertEqual(admin, run(ZANFE, "dump", "--db", self.db, "--format", "rfc7951").stdout)
        code, _, reader = self.srv.request("GET", "/restconf/data", auth("rex"))
        self.assertEqual(code, 200)
        self.lint("reader.json", reader)
        a, r = self.leaves(json.loads(admin)), self.leaves(json.loads(reader))
        self.assertTrue(r < a)
        hidden = a - r
        # A leaf's attribute name: its containers and itself below the list entry.
        def attribute(leaf):
            return re.sub(r"^.*\]/", "", leaf).replace("/", ".")
        # The server hides exactly what the catalogue's rule marks.
        for leaf in hidden:
            self.assertTrue(catalogue.secret_name(attribute(leaf)), leaf)
        for leaf in r:
            self.assertFalse(catalogue.secret_name(attribute(leaf)), leaf)
        self.assertTrue(any("password" in h for h in hidden), sorted(hidden)[:10])


    def test_a_secret_leaf_as_the_target_is_403_for_a_reader(self):
        # A row with a secret leaf (in containers, as the secrets here are) and an open one.
        def leaves_of(node, at=()):
            for k, v in node.items():
                if isinstance(v, dict):
                    yield from leaves_of(v, at + (k,))
                elif not (isinstance(v, list) and v and isinstance(v[0], dict)):
                    yield at + (k,), v
        for p in json.loads(run(ZANFE, "dump", "--json", "--db", self.db).stdout):
            url = "/restconf/data/" + url_of(p)
            entry = next(iter(json.loads(self.srv.request("GET", url + "?depth=1", auth("ada"))[2]).values()))[0]
            leaves = dict(leaves_of(entry))
            secret = [k for k in leaves if catalogue.secret_name(".".join(k))]
            open_ = [k for k in leaves if not catalogue.secret_name(".".join(k))]
            if secret and open_:
                break
        else:
            self.fail("no row has a secret leaf")
        for user, leaf, status in [("ada", secret[0], 200), ("ada", open_[-1], 200),
                                   ("rex", open_[-1], 200), ("rex", secret[0], 403)]:
            with self.subTest(user=user, leaf=leaf):
                got = self.srv.request("GET", url + "/" + "/".join(leaf), auth(user))
                if status == 403:
                    self.assert_error(got, 403, "access-denied", "not readable",
                                      path=urllib.parse.unquote(url[len("/restconf/data"):]) + "/" + "/".join(leaf))
                else:
                    self.assertEqual(got[0], status, got[2])
                    self.assertEqual(json.loads(got[2]), {"zan-config:" + leaf[-1]: leaves[leaf]})
        # Through fields the secret is a node of the reply, left out for a reader.
        for user, has in [("ada", True), ("rex", False)]:
            with self.subTest(fields=user):
                code, _, body = self.srv.request(
                    "GET", f"{url}?fields={'/'.join(secret[0])};{'/'.join(open_[-1])}", auth(user))
                self.assertEqual(code, 200, body)
                got = dict(leaves_of(next(iter(json.loads(body).values()))[0]))
                self.assertEqual(secret[0] in got, has, got)
                self.assertEqual(got[open_[-1]], leaves[open_[-1]])
        # A leaf nobody has: the dispatcher's 404, for either role.
        for user in ("ada", "rex"):
            self.assert_error(self.srv.request("GET", f"{url}/no_such_leaf", auth(user)), 404, "invalid-value",
                              "does not resolve")


class Limits(RestconfBase):
    """Connections beyond the cap, and requests beyond a connection's rate, with real clients."""

    def test_a_connection_beyond_the_cap_is_503_and_a_freed_place_is_taken(self):
        srv = Server(self.tmp.name, "--threads", "2", "--max-connections", "2")
        held = []
        try:
            for _ in range(2):
                c = srv.conn()
                c.request("GET", "/restconf")
                r = c.getresponse()
                r.read()
                self.assertEqual(r.status, 200)
                held.append(c)   # kept alive: each holds a worker
            # A raw socket, that does not close on "Connection: close" itself: the server does.
            with socket.create_connection(("127.0.0.1", srv.port), timeout=20) as raw:
                raw.sendall(b"GET /restconf HTTP/1.1\r\nHost: x\r\n\r\n")
                answer = b""
                while chunk := raw.recv(65536):
                    answer += chunk
            head, body = answer.decode().split("\r\n\r\n", 1)
            code = int(head.split()[1])
            h = {k.lower(): v.strip() for k, v in (line.split(":", 1) for line in head.split("\r\n")[1:])}
            self.assertEqual((code, h.get("retry-after"), h.get("connection")), (503, "1", "close"), body)
            self.assert_error((code, h, body), 503, "resource-denied", "too many connections: 2 at most")
            held.pop().close()
            for _ in range(200):   # the worker lets the connection go once it sees it closed
                code = srv.request("GET", "/restconf")[0]
                if code == 200:
                    break
                time.sleep(0.05)
            self.assertEqual(code, 200)
        finally:
            for c in held:
                c.close()
            self.assertEqual(srv.stop(), 0)

    def test_requests_beyond_the_rate_of_a_connection_are_429(self):
        srv = Server(self.tmp.name, "--rate", "2")
        try:
            c = srv.conn()
            got = []
            for _ in range(10):
                c.request("GET", "/restconf")
                r = c.getresponse()
                got.append((r.status, r.getheader("Retry-After"), r.read().decode()))
            c.close()
            self.assertEqual(got[0][0], 200)
            refused = [g for g in got if g[0] != 200]
            self.assertTrue(refused, [g[0] for g in got])
            for status, retry, body in refused:
                self.assert_error((status, {"content-type": JSON}, body), 429, "resource-denied",
                                  "too many requests on this connection: 2 a second")
                self.assertEqual(retry, "1")
            # The rate is the connection's: another one starts with its own.
            self.assertEqual(srv.request("GET", "/restconf")[0], 200)
        finally:
            self.assertEqual(srv.stop(), 0)


    def test_a_request_that_finds_no_turn_in_time_is_503(self):
        # One answer at a time, none waiting: of requests for the whole datastore made at
        # once, those that come while another is answered are refused.
        srv = Server(self.tmp.name, "--threads", "8", "--concurrent", "1", "--wait", "0")
        try:
            got = []
            for _ in range(20):
                start = threading.Barrier(8)

                def one():
                    start.wait()
                    got.append(srv.request("GET", "/restconf/data"))
                threads = [threading.Thread(target=one) for _ in range(8)]
                for t in threads:
                    t.start()
                for t in threads:
                    t.join()
                if any(g[0] == 503 for g in got):
                    break
            self.assertIn(200, [g[0] for g in got])
            busy = [g for g in got if g[0] != 200]
            self.assertTrue(busy)
            for g in busy:
                self.assert_error(g, 503, "resource-denied", "the server is busy: no turn came")
                self.assertEqual(g[1]["retry-after"], "1")
        finally:
            self.assertEqual(srv.stop(), 0)


class Lifecycle(RestconfBase):
    def test_sighup_reloads_whole_or_not_at_all_and_sigterm_stops(self):
        db = self.path("config.json")
        dump = run(ZANFE, "dump", "--format", "rfc7951").stdout
        with open(db, "w") as fh:
            fh.write(dump)
        srv = Server(self.tmp.name, "--db", db)
        try:
            code, h, before = srv.request("GET", "/restconf/data")
            self.assertEqual((code, before), (200, dump))
            with open(db, "w") as fh:
                fh.write(dump[: len(dump) // 2])
            srv.proc.send_signal(signal.SIGHUP)
            self.wait_log(srv, "reload failed")
            code, h2, after = srv.request("GET", "/restconf/data")
            self.assertEqual((code, after, h2["etag"]), (200, dump, h["etag"]))
            small = json.loads(dump)
            first = next(iter(small))
            small = {first: small[first]}
            with open(db, "w") as fh:
                json.dump(small, fh)
            srv.proc.send_signal(signal.SIGHUP)
            self.wait_log(srv, "reloaded")
            code, h3, after = srv.request("GET", "/restconf/data")
            self.assertEqual(json.loads(after), small)
            self.assertNotEqual(h3["etag"], h["etag"])
        finally:
            rc = srv.stop()
        self.assertEqual(rc, 0)
        with open(srv.log) as fh:
            log = fh.read()
        self.assertEqual(len([l for l in log.splitlines() if "reload failed" in l]), 1)
        self.assertIn("stopped", log)

    def wait_log(self, srv, text):
        for _ in range(200):
            with open(srv.log) as fh:
                if text in fh.read():
                    return
            time.sleep(0.05)
        self.fail(f"no '{text}' in the log")

    def test_other_addresses_need_tls_and_users(self):
        p = run(RESTCONF, "--listen", "0.0.0.0", "--port", "0", check=False)
        self.assertEqual(p.returncode, 2)
        self.assertEqual(p.stderr.strip(),
                         "zanfe-restconf: listening on 0.0.0.0 (not a loopback address) needs --cert, --key and --users")
        for args, msg in [(["--port", "x"], "--port wants a number"), (["--bogus"], "unknown option '--bogus'"),
                          (["--cert", "c"], "--cert and --key go together"),
                          (["--port", "0", "--users", self.path("none")], "cannot read the users file"),
                          (["--port", "0", "--db", self.path("none")], "")]:
            with self.subTest(args):
                p = run(RESTCONF, "--yang", MODULE, *args, check=False)
                self.assertNotEqual(p.returncode, 0)
                self.assertEqual(len(p.stderr.strip().splitlines()), 1, p.stderr)
                self.assertIn(msg, p.stderr)

    def test_tls(self):
        cert, key = self.path("cert.pem"), self.path("key.pem")
        run("openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", key, "-out", cert, "-days", "1",
            "-subj", "/CN=127.0.0.1")
        srv = Server(self.tmp.name, "--cert", cert, "--key", key, "--users", self.users, tls=True)
        try:
            code, h, body = srv.request("GET", "/restconf/yang-library-version", auth("rex"))
            self.assertEqual(code, 200)
            out = run("curl", "-sS", "--cacert", cert, "-k", "-u", "rex:rex-pw",
                      f"https://127.0.0.1:{srv.port}/restconf").stdout
            self.assertIn("ietf-restconf:restconf", out)
        finally:
            self.assertEqual(srv.stop(), 0)


if __name__ == "__main__":
    unittest.main()
