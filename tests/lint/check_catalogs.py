#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Every language has every text: whole, with its placeholders, its mark-up, its plural forms and a word for translators,
and the code asks for no text that is not there."""
import collections
import pathlib
import re
import sys
import xml.etree.ElementTree as ElementTree

ID = re.compile(r'"(qtn_[a-z0-9_]+)"')
CALL = re.compile(r'qtTrId\(\s*"(qtn_[a-z0-9_]+)"\s*([,)])')
PLACEHOLDER = re.compile(r"%L?(?:n|\d{1,2})")
MARKUP = re.compile(r"</?[A-Za-z][^<>]*>|&[a-z]+;|\n")
# The plural forms of a language in the order of the catalogs; True: it stands for one number alone and may spell it out.
FORMS = {
    "en": (True, False), "de": (True, False), "es": (True, False), "fi": (True, False),
    "fr": (False, False),
    "ru": (False, False, False),
    "ar": (True, True, True, False, False, False),
    "ja": (False,), "zh_CN": (False,),
}


class Message:
    def __init__(self, node):
        self.id = node.get("id")
        self.source = node.findtext("source") or ""
        self.comment = (node.findtext("extracomment") or "").strip()
        self.plural = node.get("numerus") == "yes"
        translation = node.find("translation")
        self.state = "missing" if translation is None else translation.get("type", "finished")
        if translation is None:
            self.texts = []
        elif self.plural:
            self.texts = [form.text or "" for form in translation.findall("numerusform")]
        else:
            self.texts = [translation.text or ""]


def counted(pattern, text):
    return collections.Counter(pattern.findall(text))


def text_errors(message, english, language):
    if message.state != "finished":
        yield f"the translation is {message.state}"
    if not message.comment:
        yield "no comment for translators"
    if message.plural != english.plural:
        yield "plural in one language only"
        return
    forms = FORMS.get(language, ()) if message.plural else (False,)
    if len(message.texts) != len(forms):
        yield f"{len(message.texts)} plural forms, not {len(forms)}"
        return
    if not english.texts:
        return
    if not message.plural and message.source != english.texts[0]:
        yield "the source is not the English text"
    for text, is_one_number in zip(message.texts, forms):
        if not text.strip():
            yield "empty"
            continue
        if text != text.strip():
            yield "blanks around the text"
        wanted, found = counted(PLACEHOLDER, english.texts[-1]), counted(PLACEHOLDER, text)
        if is_one_number and not found:
            wanted = collections.Counter({mark: n for mark, n in wanted.items() if not mark.endswith("n")})
        if found != wanted:
            yield f"placeholders {sorted(found.elements())} instead of {sorted(wanted.elements())} in “{text}”"
        if counted(MARKUP, text) != counted(MARKUP, english.texts[-1]):
            yield f"mark-up differs in “{text}”"


def catalog_errors(path, language, english):
    root = ElementTree.parse(path).getroot()
    if not re.fullmatch(re.escape(language) + "(_[A-Z]{2})?", root.get("language", "")):
        yield f"{path.name}: is marked as {root.get('language')}"
    if language not in FORMS:
        yield f"{path.name}: nobody has said how this language forms its plurals"
    messages = [Message(node) for node in root.iter("message")]
    for name, count in collections.Counter(message.id for message in messages).items():
        if count > 1:
            yield f"{path.name}: {name} stands there {count} times"
    there = {message.id for message in messages}
    for name in sorted(english.keys() - there):
        yield f"{path.name}: {name} is missing"
    for message in messages:
        if message.id not in english:
            yield f"{path.name}: {message.id} is not in the English catalog"
            continue
        for error in text_errors(message, english[message.id], language):
            yield f"{path.name}: {message.id}: {error}"


def code_errors(root, english):
    for folder in ("src", "services", "extensions"):
        for path in sorted([*(root / folder).rglob("*.h"), *(root / folder).rglob("*.cpp")]):
            text = path.read_text(encoding="utf-8")
            where = path.relative_to(root)
            for name in sorted(set(ID.findall(text)) - english.keys()):
                yield f"{where}: {name} is in no catalog"
            for name, follows in CALL.findall(text):
                if name in english and english[name].plural != (follows == ","):
                    yield f"{where}: {name} is asked for " + ("without a number" if follows == ")" else "with a number")


def check(root):
    folder = root / "translations"
    listed = re.search(r"set\(KESTREL_LANGUAGES ([^)]*)\)", (folder / "CMakeLists.txt").read_text(encoding="utf-8"))
    languages = listed.group(1).split() if listed else []
    errors, everything, files = [], {}, 0
    for catalog in ("video", "music"):
        base = folder / f"{catalog}_en.ts"
        if not base.exists():
            errors.append(f"{base.name} is missing")
            continue
        english = {message.id: message for message in map(Message, ElementTree.parse(base).getroot().iter("message"))}
        errors += [f"{base.name}: {name} is in another catalog, too" for name in sorted(english.keys() & everything.keys())]
        everything.update(english)
        there = {path.stem.removeprefix(f"{catalog}_") for path in folder.glob(f"{catalog}_*.ts")}
        errors += [f"{catalog}_{language}.ts is not compiled in" for language in sorted(there - set(languages))]
        errors += [f"{catalog}_{language}.ts is missing" for language in languages if language not in there]
        for language in sorted(there):
            files += 1
            errors += catalog_errors(folder / f"{catalog}_{language}.ts", language, english)
    return errors + list(code_errors(root, everything)), files


def main():
    errors, files = check(pathlib.Path(sys.argv[1]))
    print("\n".join(errors))
    print(f"{files} catalogs, {len(errors)} errors")
    return 1 if errors or not files else 0


if __name__ == "__main__":
    sys.exit(main())
