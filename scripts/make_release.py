"""Makes everything of a release that is uploaded, from a built program.

usage: make_release.py PROGRAM VERSION CHANGELOG SERVER FOLDER
       VERSION as in CMakeLists.txt, 7.8.0.7800; SERVER as src/update/CMakeLists.txt names it

    FOLDER/download/    the setup, the ZIP and their SHA256SUMS
    FOLDER/info/        the update information, by which the versions that are out there find this one
    FOLDER/winget/      the manifest for Windows' package manager
"""
import hashlib
import os
import re
import sys

from package import make_package, short, signs

IDENTIFIER = "Vardeko.Vardeko"
WINGET_VERSION = "1.6.0"
# As long as the program shows it in one piece.
LONGEST_MESSAGE = 1000


def message_of(changelog, version):
    """What users of older versions are told: the quoted German lines below the heading of this version, the newest."""
    with open(changelog, encoding="utf-8") as file:
        newest = re.search(r"^## (.*?)\n(.*?)(?=^## |\Z)", file.read(), re.M | re.S)
    heading = f"{short(version)} (build {version.split('.')[-1]})"
    if not newest or newest[1] != heading:
        sys.exit(f'{changelog}: the newest heading is "{newest and newest[1]}"; for this program it is "{heading}".')
    lines = re.findall(r"^> ?(.*)$", newest[2].lstrip("\n").split("\n\n")[0], re.M)
    message = " ".join(" ".join(lines).split())
    if not 0 < len(message) <= LONGEST_MESSAGE:
        sys.exit(f'{changelog}: below "{heading}" a line "> ..." tells users of older versions what is new.')
    return message


def update_information(version, message, address, setup):
    lines = ["[Vardeko 7.0]", f"Build={version.split('.')[-1]}", f"Version={short(version)}", f"UpdateMsg={message}",
             f"Url={address}/{setup}", f"FileName={setup}"]
    # As Windows keeps such files in German; the program reads them so.
    return "".join(line + "\r\n" for line in lines).encode("cp1252")


def winget_manifests(version, address, setup, digest):
    """The three files of a manifest: their names and texts."""
    head = f"PackageIdentifier: {IDENTIFIER}\nPackageVersion: {short(version)}\n"
    scopes = "".join(f"""- Architecture: x64
  Scope: {scope}
  InstallerUrl: {address}/{setup}
  InstallerSha256: {digest.upper()}
  InstallerSwitches:
    Custom: {switch}
{elevation}""" for scope, switch, elevation in (
        ("machine", "/ALLUSERS", "  ElevationRequirement: elevationRequired\n"), ("user", "/CURRENTUSER", "")))
    texts = {
        "": "DefaultLocale: de-DE\nManifestType: version\n",
        ".installer": "Platform:\n- Windows.Desktop\nMinimumOSVersion: 10.0.0.0\nInstallerType: nullsoft\n"
                      "UpgradeBehavior: install\nProductCode: Vardeko\n"
                      f"Installers:\n{scopes}ManifestType: installer\n",
        ".locale.de-DE": "PackageLocale: de-DE\nPublisher: Vardeko\nPackageName: Vardeko\nLicense: Proprietary\n"
                         "ShortDescription: Hält eine zweite Kopie Ihrer Dateien auf einem Netzlaufwerk aktuell.\n"
                         "ManifestType: defaultLocale\n",
    }
    return {f"{IDENTIFIER}{part}.yaml": f"{head}{text}ManifestVersion: {WINGET_VERSION}\n"
            for part, text in texts.items()}


def digest_of(path):
    with open(path, "rb") as file:
        return hashlib.sha256(file.read()).hexdigest()


def write(folder, name, data):
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, name), "wb") as file:
        file.write(data)


def make_release(program, version, changelog, server, folder):
    message = message_of(changelog, version)
    download = os.path.join(folder, "download")
    paths = sorted(make_package(program, version, download))
    sums = {os.path.basename(path): digest_of(path) for path in paths}
    write(download, "SHA256SUMS", "".join(f"{digest}  {name}\n" for name, digest in sums.items()).encode())
    setup = f"VardekoSetup-{short(version)}.exe"
    address = f"https://{server}/download"
    write(os.path.join(folder, "info"), "vardeko.info", update_information(version, message, address, setup))
    for name, text in winget_manifests(version, address, setup, sums[setup]).items():
        write(os.path.join(folder, "winget"), name, text.encode())
    print("Signed and verified." if signs() else "NOT signed: scripts/sign.sh says how to name a certificate. "
          "Windows will warn everybody who starts the setup.")


if __name__ == "__main__":
    if len(sys.argv) != 6:
        sys.exit(__doc__)
    make_release(*sys.argv[1:])
