"""Checks that docs/anleitung.md is that of this version and explains every text that the program shows, and that
the texts stand in src/texts; prints the ones left out and the ones that stand elsewhere.

Shown is every word in src/texts, and elsewhere in src/ what sounds like language: a string with a blank between
words or a letter beyond ASCII, and every caption and hint. A text that the program puts together is looked for
piece by piece.
"""
import os
import re
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
SOURCES = os.path.join(ROOT, "src")
SETUP_TEXTS = os.path.join(ROOT, "setup", "texts.nsh")
GUIDE = os.path.join(ROOT, "docs", "anleitung.md")
# What sounds like language and is never shown.
NOT_SHOWN = {
    "Common AppData", "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\explorer\\Shell Folders",  # registry
    "Mozilla/5.0 (compatible; Vardeko)", "Update Agent", "Range: bytes=",  # HTTP
    "Vardeko 7.0",  # section of the update information
    "CreateHashContext comes first", "numbers are copied to and from files as they are",  # assertions
    "Directory", "Extensions",  # fields, by their names in the file
    "Minimize", "About Vardeko",  # actions without a button and without a key
    # Mistakes in a call of ours; no call makes them.
    "The requested algorithm is not supported", "The specified NetEncoding is not supported!",
    "The text is not valid hexadecimal text!",
    "The kcArchivable option is not applicable to the DeriveKey!",
    "The kcForceHighProtection option is not applicable to the DeriveKey!",
    "The kcUserProtected option is not applicable to the DeriveKey!",
    "The kcNoSalt option is only applicable with 40bits symmetric keys!",
    "The ContainerName must be empty when using the CRYPT_VERIFYCONTEXT flag!",
    "The GenerateKey can only be executed when the CSP is active!",
    "The HashBuffer can only be executed when the CSP is active!",
}
# Files outside src/texts that word texts of their own.
WORDED_ELSEWHERE = {
    "support/rw_crypt_exception.cpp", "support/rw_csp.cpp",  # the encryption's, English for ever
}
# Comments, character constants, and strings in a row, which are one.
TOKEN = re.compile(r"//[^\n]*|/\*.*?\*/|'(?:\\.|[^'\\\n])+'|((?:L?\"(?:\\.|[^\"\\\n])*\"\s*)+)", re.S)
CAPTION = re.compile(r"\.(?:caption|hint)\s*=\s*L\"([^\"]+)\"")
WORD = re.compile(r"[A-Za-zÄÖÜäöüß]{2}")
LANGUAGE = re.compile(r"[a-zäöüß,.!?:] +[(„]?[A-Za-zÄÖÜäöü]|[^\x00-\x7f]", re.S)
ESCAPES = {"n": "\n", "r": "\n", "t": "\n"}


def plain(text):
    """One blank between words, as a reader sees it."""
    return " ".join(text.split())


def strings(source):
    for found in TOKEN.finditer(source):
        if found[1]:
            pieces = re.findall(r'"((?:\\.|[^"\\\n])*)"', found[1])
            yield re.sub(r"\\(.)", lambda code: ESCAPES.get(code[1], code[1]), "".join(pieces))


def shown_texts(source, mark):
    source = re.sub(r"^\s*#[^\n]*", "", source, flags=re.M)
    texts = [line for text in strings(source) if mark.search(text) for line in text.split("\n")]
    return {plain(text) for text in texts + CAPTION.findall(source)} - {""} - NOT_SHOWN


def setup_texts():
    """The first sentence of every message of the setup; what its pages say explains itself."""
    with open(SETUP_TEXTS, encoding="utf-8") as file:
        messages = file.read().split("; Messages")[1]
    texts = re.findall(r'^!define \w+ "(.*)"$', messages, re.M)
    return {re.split(r"(?<=\.) |\$|\(", text)[0].strip() for text in texts}


def main():
    with open(GUIDE, encoding="utf-8") as file:
        guide = plain(file.read().replace("` `", " "))
    left_out, elsewhere = [], []
    count = 0
    for folder, _, names in os.walk(SOURCES):
        for name in sorted(names):
            if not name.endswith((".h", ".cpp")):
                continue
            path = os.path.relpath(os.path.join(folder, name), SOURCES)
            is_texts = path.startswith("texts/")
            with open(os.path.join(folder, name), encoding="utf-8") as file:
                texts = sorted(shown_texts(file.read(), WORD if is_texts else LANGUAGE))
            count += len(texts)
            left_out += [f"src/{path}: {text}" for text in texts if text not in guide]
            if not is_texts and path not in WORDED_ELSEWHERE:
                elsewhere += [f"src/{path}: {text}" for text in texts]
    texts = setup_texts()
    count += len(texts)
    left_out += [f"setup/texts.nsh: {text}" for text in sorted(texts) if text not in guide]
    with open(os.path.join(ROOT, "CMakeLists.txt"), encoding="utf-8") as file:
        version = re.search(r"project\(Vardeko VERSION (\d+\.\d+)", file.read())[1]
    if not guide.startswith(f"# Vardeko {version}: "):
        left_out.append(f"The title does not name version {version}.")
    if not count:
        left_out.append("No text was found in src/ at all.")
    if left_out:
        print("docs/anleitung.md does not explain these texts:\n" + "\n".join(left_out))
    if elsewhere:
        print("These texts belong into src/texts:\n" + "\n".join(elsewhere))
    return 1 if left_out or elsewhere else 0


if __name__ == "__main__":
    sys.exit(main())
