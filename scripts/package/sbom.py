"""The list of what the package contains, in SPDX 2.3 (JSON): files with checksums, where they come from, licences."""
import datetime
import hashlib
import json
import uuid
from pathlib import Path

import components

SCHEMA = Path(__file__).resolve().parent / "sbom.schema.json"
NAME = "clusutil.spdx.json"
NOT_LISTED = (NAME, "SHA256SUMS")  # made of the list, or of what holds it


def digest(algorithm, data):
    return hashlib.new(algorithm, data).hexdigest()


def listed_files(tree):
    return [path for path in sorted(tree.rglob("*")) if path.is_file() and str(path.relative_to(tree)) not in NOT_LISTED]


def file_entries(tree):
    """The entries of all files, and which component each redistributed one comes from."""
    entries, origins = [], []
    for number, path in enumerate(listed_files(tree), 1):
        data = path.read_bytes()
        component = components.origin(path.name)
        entry = {
            "SPDXID": f"SPDXRef-File-{number}",
            "fileName": f"./{path.relative_to(tree)}",
            "checksums": [{"algorithm": "SHA1", "checksumValue": digest("sha1", data)},
                          {"algorithm": "SHA256", "checksumValue": digest("sha256", data)}],
            "licenseConcluded": component.licence if component else "NOASSERTION",
            "copyrightText": "NOASSERTION",
        }
        entries.append(entry)
        if component:
            origins.append((entry["SPDXID"], component))
    return entries, origins


def verification_code(entries):
    """SPDX 2.3's: the SHA-1 of the files' SHA-1 in ascending order."""
    return digest("sha1", "".join(sorted(entry["checksums"][0]["checksumValue"] for entry in entries)).encode())


def own_package(name, version, entries):
    return {
        "SPDXID": "SPDXRef-clusutil",
        "name": name,
        "versionInfo": version,
        "downloadLocation": "NOASSERTION",
        "filesAnalyzed": True,
        "packageVerificationCode": {"packageVerificationCodeValue": verification_code(entries),
                                    "packageVerificationCodeExcludedFiles": [f"./{name}" for name in NOT_LISTED]},
        "licenseConcluded": "NOASSERTION",
        "licenseDeclared": "NOASSERTION",
        "copyrightText": "NOASSERTION",
    }


def component_package(component):
    return {
        "SPDXID": component.spdx_id,
        "name": component.name,
        "versionInfo": component.version,
        "downloadLocation": "NOASSERTION",
        "filesAnalyzed": False,
        "licenseConcluded": component.licence,
        "licenseDeclared": component.licence,
        "copyrightText": "NOASSERTION",
        "comment": f"{component.use} Licence texts: ./licenses/{component.licence_file}",
        "externalRefs": [{"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl",
                          "referenceLocator": f"pkg:deb/debian/{component.package}@{component.version.replace('+', '%2B')}"}],
    }


def relation(subject, kind, target):
    return {"spdxElementId": subject, "relationshipType": kind, "relatedSpdxElement": target}


def document(tree, name, version, epoch):
    entries, origins = file_entries(tree)
    relations = [relation("SPDXRef-DOCUMENT", "DESCRIBES", "SPDXRef-clusutil")]
    relations += [relation("SPDXRef-clusutil", "CONTAINS", entry["SPDXID"]) for entry in entries]
    relations += [relation("SPDXRef-clusutil", component.link, component.spdx_id) for component in components.ALL]
    relations += [relation(file, "GENERATED_FROM", component.spdx_id) for file, component in origins]
    identity = json.dumps([name, version, epoch, entries], sort_keys=True)
    return {
        "spdxVersion": "SPDX-2.3",
        "dataLicense": "CC0-1.0",
        "SPDXID": "SPDXRef-DOCUMENT",
        "name": name,
        "documentNamespace": f"urn:uuid:{uuid.uuid5(uuid.NAMESPACE_OID, identity)}",
        "creationInfo": {
            "created": datetime.datetime.fromtimestamp(epoch, datetime.timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ"),
            "creators": ["Organization: clusutil developers", f"Tool: clusutil-package-{version}"],
        },
        "packages": [own_package(name, version, entries), *map(component_package, components.ALL)],
        "files": entries,
        "relationships": relations,
        "hasExtractedLicensingInfos": [
            {"licenseId": component.licence, "name": component.name, "extractedText": component.licence_text()}
            for component in components.ALL if component.licence.startswith("LicenseRef-")],
    }


def write(tree, name, version, epoch):
    text = json.dumps(document(tree, name, version, epoch), indent=1, ensure_ascii=False)
    (tree / NAME).write_text(text + "\n", encoding="utf-8")


def check(tree):
    """What is wrong with the list of an unpacked package: its form, its references, files and checksums."""
    import jsonschema
    problems = []
    found = json.loads((tree / NAME).read_text(encoding="utf-8"))
    validator = jsonschema.Draft202012Validator(json.loads(SCHEMA.read_text(encoding="utf-8")))
    problems += [f"{NAME}: {error.json_path}: {error.message[:200]}" for error in validator.iter_errors(found)]
    if problems:
        return problems
    ids = [element["SPDXID"] for element in [found, *found["packages"], *found["files"]]]
    if len(ids) != len(set(ids)):
        problems.append(f"{NAME}: an identifier is there twice")
    for entry in found["relationships"]:
        for end in (entry["spdxElementId"], entry["relatedSpdxElement"]):
            if end not in ids:
                problems.append(f"{NAME}: {end} is named and not there")
    licences = {entry["licenseId"] for entry in found["hasExtractedLicensingInfos"]}
    for entry in [*found["packages"], *found["files"]]:
        if entry["licenseConcluded"].startswith("LicenseRef-") and entry["licenseConcluded"] not in licences:
            problems.append(f"{NAME}: the text of {entry['licenseConcluded']} is missing")
    sums = {entry["fileName"]: entry["checksums"][1]["checksumValue"] for entry in found["files"]}
    real = {f"./{path.relative_to(tree)}": digest("sha256", path.read_bytes()) for path in listed_files(tree)}
    problems += [f"{NAME}: {name} differs or is missing" for name in sorted(sums.keys() | real.keys())
                 if sums.get(name) != real.get(name)]
    return problems
