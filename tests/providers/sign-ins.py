"""Signs in at every provider and prints the table: sign-ins.py SVO_SIGNIN_ASK [PART OF A ROW]...

Writes the table and a picture of every page to the folder "providers". Exits with 1 if a row is not as expected."""

import json
import os
import re
import subprocess
import sys
import time

import hand
import service
from service import Key, OpenIdConnect, Page, Saml, Ticket

PASSWORD = "Correct-Horse-7"
NODE = "https://oidc.example.test"
SIMPLESAML = "https://saml.example.test/simplesamlphp/saml2/idp/metadata.php"
GLEWLWYD = "https://glewlwyd.example.test/api/oidc"
LEMON = "https://auth.example.test"
APACHE = "https://www.example.test"
KEYS = "https://keys.example.test/"


def one_time_code():
    secret = "GEZDGNBVGY3TQOJQGEZDGNBVGY3TQOJQ"  # as in glewlwyd/start
    return subprocess.check_output(["oathtool", "--totp", "-b", secret], text=True).strip()


# What the user does: a name is clicked, a pair is a field and what is written into it.
AT_NODE = [("Enter any login", "ada"), ("and password", PASSWORD), "Sign-in"]
AT_SIMPLESAML = [("Username", "ada"), ("Password", PASSWORD), "Login"]
AT_GLEWLWYD = [("Login", "ada"), ("Password", PASSWORD), "OK"]
AT_LEMON = [("Login", "dwho"), ("Password", "dwho"), "Connect"]
IN_PROMPT = [("Name", "ada"), ("Password", PASSWORD), "OK"]
WITH_KEY = [("PIN of your security key", "1234"), "OK"]

# Provider, flow, sign-in, what the user does, what is found in the end.
ROWS = [
    ("node-oidc-provider", "code with PKCE, consent", OpenIdConnect(NODE), AT_NODE + ["Continue"], "of ada"),
    ("node-oidc-provider", "fragment", OpenIdConnect(NODE, "fragment"), AT_NODE + ["Continue"], "of ada"),
    ("node-oidc-provider", "form_post", OpenIdConnect(NODE, "form_post"), AT_NODE + ["Continue"], "of ada"),
    ("node-oidc-provider", "cancel", OpenIdConnect(NODE), ["[ Cancel ]"], "error=access_denied"),
    ("node-oidc-provider", "consent refused", OpenIdConnect(NODE), AT_NODE + ["[ Cancel ]"], "error=access_denied"),
    ("SimpleSAMLphp", "SAML redirect binding, consent", Saml(SIMPLESAML, "redirect"),
     AT_SIMPLESAML + ["Yes, continue"], "of ada"),
    ("SimpleSAMLphp", "SAML POST binding, wrong password first", Saml(SIMPLESAML, "post"),
     [("Username", "ada"), ("Password", "wrong"), "Login"] + AT_SIMPLESAML + ["Yes, continue"], "of ada"),
    ("Glewlwyd", "code with PKCE", OpenIdConnect(GLEWLWYD), AT_GLEWLWYD + ["Continue"], "code exchanged"),
    ("Glewlwyd", "form_post, wrong password first", OpenIdConnect(GLEWLWYD, "form_post"),
     [("Login", "ada"), ("Password", "wrong"), "OK"] + AT_GLEWLWYD + ["Continue"], "code exchanged"),
    ("Glewlwyd", "one-time code, consent", OpenIdConnect(GLEWLWYD, scope="openid strong"),
     AT_GLEWLWYD + ["Strong", "Grant access", ("Code", one_time_code), "OK", "Continue"], "code exchanged"),
    ("LemonLDAP::NG", "code with PKCE, consent", OpenIdConnect(LEMON), AT_LEMON + ["Accept"], "of dwho"),
    ("LemonLDAP::NG", "fragment, wrong password first", OpenIdConnect(LEMON, "fragment"),
     [("Login", "rtyler"), ("Password", "wrong"), "Connect", ("Login", "rtyler"), ("Password", "rtyler"), "Connect",
      "Accept"], "of rtyler"),
    ("LemonLDAP::NG", "SAML redirect binding", Saml(LEMON + "/saml/metadata", "redirect"), AT_LEMON, "of dwho"),
    ("LemonLDAP::NG", "SAML POST binding", Saml(LEMON + "/saml/metadata", "post"), AT_LEMON, "of dwho"),
    ("Apache", "Basic", Page(APACHE + "/basic/"), IN_PROMPT, "user ada"),
    ("Apache", "Basic, wrong password first", Page(APACHE + "/basic/"),
     [("Name", "ada"), ("Password", "wrong"), "OK"] + IN_PROMPT, "user ada"),
    ("Apache", "Basic, cancel", Page(APACHE + "/basic/"), ["Cancel", "Continue as a guest"], "user guest"),
    ("Apache", "Digest", Page(APACHE + "/digest/"), IN_PROMPT, "user ada"),
    ("Apache", "client certificate", Page("https://card.example.test/card/"),
     ["Ada", ("PIN of “Card”", "1234"), "OK"], "user Ada"),
    ("Apache", "Negotiate", Ticket("https://sso.example.test/negotiate/", PASSWORD), [], "user ada@EXAMPLE.TEST"),
    ("SimpleWebAuthn", "registration of a security key", Key(KEYS, "1234"), ["Register"] + WITH_KEY + ["Continue"],
     "register accepted"),
    ("SimpleWebAuthn", "registration, sign-in", Key(KEYS, "1234"),
     ["Register"] + WITH_KEY + ["Sign in"] + WITH_KEY + ["Continue"], "register accepted, sign-in accepted"),
    ("SimpleWebAuthn", "registration, sign-in with another challenge", Key(KEYS, "1234"),
     ["Register"] + WITH_KEY + ["Sign in with another challenge"] + WITH_KEY + ["Continue"],
     "register accepted, sign-in refused: Unexpected authentication response challenge"),
]


def sign_in(ask, screen, start, steps, pictures):
    """Returns the result of the window, with a "problem" if a step could not be done."""
    problem = {}
    launcher = subprocess.Popen([ask, "--json", "--zelURL=" + start.start(), "--redirectURL=" + service.REDIRECT,
                                 "--redirectType3URL=" + service.SERVICE + "/enterprise", "--productName=Example"],
                                stdout=subprocess.PIPE, text=True)
    user = hand.Hand(screen, pictures, launcher)
    try:
        for step in steps:
            if isinstance(step, str):
                user.click(step)
            else:
                user.write(step[0], step[1]() if callable(step[1]) else step[1])
        hand.wait_for("message", lambda: launcher.poll() is not None)
    except Exception as error:
        user.picture()
        problem = {"problem": f"{error}; the window shows {user.names()}"}
        launcher.terminate()
    return json.loads(launcher.communicate()[0]) | problem


def run(ask, screen, row):
    """Returns a line of the table, and whether the row is as expected."""
    provider, flow, start, steps, expected = row
    began = time.monotonic()
    result = sign_in(ask, screen, start, steps, "providers/" + re.sub(r"\W+", "-", f"{provider} {flow}"))
    seconds = time.monotonic() - began
    if result["code"] != 0 or "problem" in result:
        return f"| {provider} | {flow} | {result} | | {seconds:.0f} |", False
    try:
        found = start.finish(result["url"])
    except Exception as error:
        found = repr(error)
    shown = re.sub("=[^&]*", "=…", result["url"].removeprefix(service.SERVICE))
    return f"| {provider} | {flow} | 0, `{shown}` | {found} | {seconds:.0f} |", expected in found


def main(ask, *wanted):
    os.makedirs("providers", exist_ok=True)
    service.start()
    screen = hand.start_display()
    passed = True
    with open("providers/table.md", "w") as table:
        def line(text):
            print(text, file=table, flush=True)
            print(text, flush=True)
        line("| provider | flow | message | verified | seconds |\n|---|---|---|---|---|")
        for row in ROWS:
            if all(word in " ".join(row[:2]) for word in wanted):
                text, good = run(ask, screen, row)
                line(text)
                passed = passed and good
    return 0 if passed else 1


sys.exit(main(*sys.argv[1:]))
