"""The service that the user signs in to, https://app.example.test: a client of OpenID Connect and of SAML, which
verifies what it gets with PyJWT and PySAML2."""

import base64
import hashlib
import json
import os
import pathlib
import secrets
import subprocess
import tempfile
import threading
import urllib.request
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from urllib.parse import parse_qs, urlencode, urlsplit

import jwt
import saml2
import saml2.client
import saml2.config

SERVICE = "https://app.example.test"
REDIRECT = SERVICE + "/done"
SOURCES = pathlib.Path(__file__).resolve().parents[2]


def first_values(query):
    return {name: values[0] for name, values in parse_qs(query).items()}


class OpenIdConnect:
    """A sign-in by OpenID Connect with PKCE. `mode` is the response mode: query, fragment or form_post."""

    def __init__(self, issuer, mode="query", **parameters):
        self.issuer, self.mode, self.parameters = issuer, mode, parameters

    def start(self):
        """Returns the address at which the sign-in starts."""
        with urllib.request.urlopen(self.issuer + "/.well-known/openid-configuration") as reply:
            self.provider = json.load(reply)
        self.verifier, self.state, self.nonce = (secrets.token_urlsafe(48) for _ in range(3))
        self.redirect = SERVICE + "/form" if self.mode == "form_post" else REDIRECT
        challenge = base64.urlsafe_b64encode(hashlib.sha256(self.verifier.encode()).digest()).rstrip(b"=").decode()
        query = {"client_id": "desktop", "redirect_uri": self.redirect, "scope": "openid", "state": self.state,
                 "nonce": self.nonce, "response_type": "code id_token" if self.mode == "fragment" else "code",
                 "response_mode": self.mode, "code_challenge": challenge, "code_challenge_method": "S256"}
        return self.provider["authorization_endpoint"] + "?" + urlencode({**query, **self.parameters})

    def finish(self, address):
        """Verifies the result and exchanges its code. Returns what was found."""
        parts = urlsplit(address)
        result = first_values(parts.fragment if self.mode == "fragment" else parts.query)
        if result["state"] != self.state:
            raise ValueError("the state is not ours")
        if "error" in result:
            return "error=" + result["error"]
        if "id_token" in result:
            self._verify(result["id_token"])
        form = {"grant_type": "authorization_code", "client_id": "desktop", "code": result["code"],
                "redirect_uri": self.redirect, "code_verifier": self.verifier}
        with urllib.request.urlopen(self.provider["token_endpoint"], urlencode(form).encode()) as reply:
            user = self._verify(json.load(reply)["id_token"])
        return "code exchanged for the token of " + user

    def _verify(self, token):
        key = jwt.PyJWKClient(self.provider["jwks_uri"]).get_signing_key_from_jwt(token)
        claims = jwt.decode(token, key.key, algorithms=["RS256", "ES256"], audience="desktop",
                            issuer=self.provider["issuer"])
        if claims["nonce"] != self.nonce:
            raise ValueError("the token is not for this sign-in")
        return claims["sub"]


class Saml:
    """A sign-in by SAML. `binding` is the one of the request: redirect or post."""

    last = None  # the sign-in that runs

    def __init__(self, metadata, binding):
        self.metadata, self.binding = metadata, binding

    def start(self):
        config = saml2.config.SPConfig()
        config.load({
            "entityid": SERVICE + "/saml",
            "metadata": {"inline": [urllib.request.urlopen(self.metadata).read().decode()]},
            "service": {"sp": {
                "endpoints": {"assertion_consumer_service": [(SERVICE + "/acs", saml2.BINDING_HTTP_POST)]},
                "want_assertions_signed": True, "want_response_signed": False}},
        })
        self.client = saml2.client.Saml2Client(config)
        binding = saml2.BINDING_HTTP_REDIRECT if self.binding == "redirect" else saml2.BINDING_HTTP_POST
        self.request, http = self.client.prepare_for_authenticate(binding=binding)
        Saml.last = self
        if self.binding == "redirect":
            return dict(http["headers"])["Location"]
        self.page = http["data"]
        return SERVICE + "/request"

    def receive(self, response):
        """Verifies that a response is signed and replies to our request. Returns the user."""
        parsed = self.client.parse_authn_request_response(response, saml2.BINDING_HTTP_POST, {self.request: "/"})
        return parsed.get_subject().text

    def finish(self, address):
        return "assertion verified, of " + first_values(urlsplit(address).query)["user"]


class Page:
    """A page whose server signs the user in."""

    def __init__(self, address):
        self.address = address

    def start(self):
        return self.address

    def finish(self, address):
        return "user " + first_values(urlsplit(address).query)["user"]


class Ticket(Page):
    """A page whose server takes a Kerberos ticket. The user has one during this sign-in only."""

    def __init__(self, address, password):
        super().__init__(address)
        self.password = password

    def start(self):
        subprocess.run(["kinit"], input=self.password + "\n", text=True, check=True, stdout=subprocess.DEVNULL)
        return super().start()

    def finish(self, address):
        subprocess.run(["kdestroy"], check=True)
        return super().finish(address)


class Key(Page):
    """A page that uses a security key, and whose server tells what its verifier says. The user has a new key, in
    software, during this sign-in only, which needs no touch."""

    def __init__(self, address, pin):
        super().__init__(address)
        self.options = {"plug": "key", "pin": pin, "touched": True}

    def start(self):
        address = tempfile.mkdtemp() + "/keys"
        self.keys = subprocess.Popen([SOURCES / "tests/tools/keys/software-keys", address], text=True,
                                     stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        print(json.dumps(self.options), file=self.keys.stdin, flush=True)
        while self.keys.stdout.readline() != "plugged key\n":
            pass
        os.environ["SVO_SOFTWARE_KEYS"] = address
        os.environ["LD_PRELOAD"] = str(SOURCES / "build/tests/tools/libsoftware-key-devices.so")
        return super().start()

    def finish(self, address):
        del os.environ["LD_PRELOAD"], os.environ["SVO_SOFTWARE_KEYS"]
        self.keys.communicate()
        return first_values(urlsplit(address).query)["verifier"]


class Handler(BaseHTTPRequestHandler):
    def do_GET(self):
        if self.path == "/request":
            self.reply(Saml.last.page)
        else:
            self.reply("<!DOCTYPE html><title>Signed in</title><h1>Signed in</h1>")

    def do_POST(self):
        form = first_values(self.rfile.read(int(self.headers["Content-Length"])).decode())
        if self.path == "/acs":
            form = {"user": Saml.last.receive(form["SAMLResponse"])}
        self.send_response(303)
        self.send_header("Location", REDIRECT + "?" + urlencode(form))
        self.end_headers()

    def reply(self, page):
        body = page.encode()
        self.send_response(200)
        self.send_header("Content-Type", "text/html; charset=utf-8")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *_):
        pass


def start():
    server = ThreadingHTTPServer(("127.0.0.1", 8000), Handler)
    threading.Thread(target=server.serve_forever, daemon=True).start()
