"""Our declarations of the system's frameworks, as clang reads them, held against the type declarations of the npm
package @nativescript/macos-node-api, which are generated from Apple's own headers.

There a selector is one word (`initWithTitle:action:` is `initWithTitleAction`), a number is a `number`, a string a
`string`. Whether a result may be nil it does not say."""
import json
import re
import subprocess

# Where ours differs from the package, and why it stands all the same. An entry that is not needed is a fault too.
KNOWN = {
    "-[NSDictionary initWithContentsOfURL:]": "declared by name, as macOS does, where the package has `this`",
    "-[NSEvent type]": "declared by the underlying type of NSEventType, as it is passed on",
    "-[NSMutableDictionary setObject:forKey:]": "a key of any type, where macOS asks for one that copies: a string",
    "-[NSNotificationCenter addObserverForName:object:queue:usingBlock:]": "the queue of any type: it is always nil",
    "-[NSTask setExecutableURL:]": "may be given nil, which the package does not say of this one",
}

# The package names these, but not their values.
KNOWN_VALUES = {"NSUTF8StringEncoding": 4, "NSISOLatin1StringEncoding": 5, "kIOPMAssertionLevelOff": 0,
                "kIOPMAssertionLevelOn": 255}


NUMBERS = {"double", "int", "long", "long long", "unsigned int", "unsigned long", "unsigned long long", "uint32_t",
           "NSInteger", "NSUInteger", "CGFloat", "NSTimeInterval", "NSFontWeight", "NSControlStateValue",
           "NSStringEncoding", "Boolean", "CFIndex", "CFTypeID", "IOReturn", "IOPMAssertionID", "IOPMAssertionLevel"}
STRINGS = {"NSFileAttributeKey", "NSNotificationName", "NSRunLoopMode", "NSString *", "SEL"}
STRUCTURES = {"NSRect": "CGRect", "NSPoint": "CGPoint", "NSSize": "CGSize", "NSEdgeInsets": "NSEdgeInsets",
              "CFRange": "CFRange", "NSRange": "_NSRange"}


class Package:
    """The classes, functions, constants and enumerations that the package declares."""

    def __init__(self, folder, names):
        self.parents, self.members, self.functions, self.constants, self.enums = {}, {}, {}, {}, {}
        self.framework = {}
        for name in names:
            self._read(name, (folder / f"{name}.d.ts").read_text())

    def _read(self, framework, text):
        container = re.compile(r"^declare (class|interface) (\w+)(.*?)\{\n(.*?)^\}", re.M | re.S)
        for kind, name, parents, body in container.findall(text):
            parents = re.sub(r"<.*?>|\b(extends|implements)\b", "", parents)
            self.parents.setdefault(name, set()).update(re.findall(r"\w+", parents))
            self.members.setdefault(name, []).extend(self._members(body))
            if kind == "class":
                self.framework.setdefault(name, framework)
        for name, body in re.findall(r"^declare const (\w+): \{\n(.*?)^\}", text, re.M | re.S):
            self.enums[name] = {key: int(value) for key, value in re.findall(r"^  (\w+): (-?\d+),", body, re.M)}
        for name, kind in re.findall(r"^declare const (\w+): ([^{\n]+);", text, re.M):
            self.constants[name] = kind
            self.framework[name] = framework
        for name, parameters, result in re.findall(r"^declare function (\w+)\((.*)\): (.+);", text, re.M):
            self.functions[name] = (parameter_types(parameters), result)
            self.framework[name] = framework

    @staticmethod
    def _members(body):
        """(is static, name, parameter types or None for a property, result) of each member."""
        for line in re.findall(r"^  (\S.*);$", body, re.M):
            static = line.startswith("static ")
            line = re.sub(r"^(static |readonly )+", "", line)
            method = re.match(r"(\w+)\??(?:<.*?any>)?\((.*)\): (.+)$", line)
            if method:
                parameters = [p for p in parameter_types(method[2]) if p != "This"]
                yield static, method[1], parameters, method[3]
            else:
                name, _, kind = line.partition(": ")
                yield static, name.rstrip("?"), None, kind

    def lineage(self, name):
        """The class, its ancestors and their protocols."""
        seen, todo = [], [name]
        while todo:
            name = todo.pop(0)
            if name in self.members and name not in seen:
                seen.append(name)
                todo += sorted(self.parents[name])
        return seen

    def names_returning(self, *kinds):
        """The methods and properties, of whichever class, whose result is always one of these."""
        results = {}
        for members in self.members.values():
            for _, name, _, result in members:
                results.setdefault(name, set()).add(result)
        return {name for name, found in results.items() if found <= set(kinds)}

    def candidates(self, owner, static, name):
        for ancestor in self.lineage(owner):
            for is_static, member, parameters, result in self.members[ancestor]:
                if is_static == static and member == name:
                    yield parameters, result


def parameter_types(text):
    """The types in `a: X, b: (p: Y) => void | null`."""
    types, depth, current = [], 0, ""
    for character in text.replace("=>", "\1"):
        depth += (character in "(<{[") - (character in ")>}]")
        if character == "," and depth == 0:
            types.append(current)
            current = ""
        else:
            current += character
    types = [t for t in types + [current] if t.strip()]
    return [t.replace("\1", "=>").partition(": ")[2].strip() for t in types]


def plain(kind):
    """An Objective-C type without ownership, nullability and generic arguments."""
    kind = re.sub(r"\b(_Nullable|_Nonnull|_Null_unspecified|__strong|__autoreleasing|const|struct)\b", "", kind)
    while "<" in kind:
        kind, before = re.sub(r"<[^<>]*>", "", kind), kind
        if kind == before:
            break
    return re.sub(r"\s*\*", " *", re.sub(r"\s+", " ", kind)).strip().replace("* *", "**")


def agrees(ours, theirs, package):
    """Whether a type of ours and one of the package can be the same."""
    theirs = re.sub(r"( \| null)+$", "", theirs)
    block = re.match(r"(.+?) ?\(\^ ?(?:_Nonnull|_Nullable)?(?: ?__strong)?\)\((.*)\)$", ours)
    if block:
        arrow = re.match(r"\((.*)\) => (.+)$", theirs)
        if not arrow:
            return False
        parameters = [p for p in block[2].split(", ") if p and p != "void"]
        expected = parameter_types(arrow[1])
        return (len(parameters) == len(expected) and agrees(block[1], arrow[2], package)
                and all(agrees(a, b, package) for a, b in zip(parameters, expected)))
    name = plain(ours)
    if name in ("void", "BOOL"):
        return theirs == {"void": "void", "BOOL": "boolean"}[name]
    if name in NUMBERS:
        return theirs == "number"
    if name in STRINGS:
        return theirs == "string"
    if name in STRUCTURES:
        return theirs == STRUCTURES[name]
    if name in package.enums:
        return theirs == f"interop.Enum<typeof {name}>"
    if name == "id":
        protocol = re.search(r"id<(\w+)>", ours)
        if protocol and protocol[1] != "NSObject":
            return theirs == protocol[1]
        return theirs == "interop.Object" or theirs == "NSObject" or theirs in ("ObjectType", "KeyType")
    if name == "instancetype":
        return theirs in ("this", "InstanceType<This>")
    if re.fullmatch(r"CF\w+Ref", name):
        return theirs == "interop.Object"
    if name.endswith("**") or re.fullmatch(r"(UInt8|void|IOPMAssertionID|CFIndex) \*", name):
        return theirs == "interop.PointerConvertible"
    if name.endswith(" *"):
        return re.match(r"\w+", theirs)[0] == name[:-2]
    return False


def may_be_nil_alike(ours, theirs):
    if theirs == "interop.PointerConvertible" or "=>" in theirs:  # the package does not say
        return True
    return ("_Nullable" in ours) == theirs.endswith("| null")


def selector_name(selector):
    first, *rest = selector.split(":")
    return first + "".join(part[:1].upper() + part[1:] for part in rest)


class Comparison:
    def __init__(self, package):
        self.package, self.faults, self.counted, self.used = package, [], {}, set()

    def fault(self, what, message):
        if what in KNOWN:
            self.used.add(what)
        else:
            self.faults.append(f"{what}: {message}")

    def count(self, kind):
        self.counted[kind] = self.counted.get(kind, 0) + 1

    def method(self, owner, node):
        self.count("methods")
        selector, static = node["name"], not node.get("instance")
        what = f"{'+' if static else '-'}[{owner} {selector}]"
        parameters = [p["type"]["qualType"] for p in node.get("inner", []) if p["kind"] == "ParmVarDecl"]
        result, name = node["returnType"]["qualType"], selector_name(selector)
        found = list(self.package.candidates(owner, static, name))
        if not parameters and re.match(r"is[A-Z]", name):  # the getter of a property named without its "is"
            found += self.package.candidates(owner, static, name[2].lower() + name[3:])
        if not found:
            return self.fault(what, "macOS has no such method")
        if not any(self._same(parameters, result, *candidate) for candidate in found):
            self.fault(what, f"is declared {result} ({', '.join(parameters)}), but macOS has "
                       + " or ".join(f"{r} ({', '.join(p or [])})" for p, r in found))

    def _same(self, parameters, result, expected, expected_result):
        expected = expected or []
        return (len(parameters) == len(expected) and agrees(result, expected_result, self.package)
                and all(agrees(a, b, self.package) and may_be_nil_alike(a, b) for a, b in zip(parameters, expected)))

    def container(self, node):
        self.count("classes and protocols")
        name = node["name"]
        if name not in self.package.members:
            return self.fault(name, "macOS has no such class or protocol")
        parent = node.get("super", {}).get("name")
        if parent and parent not in self.package.parents[name]:
            self.fault(name, f"is declared to extend {parent}, but on macOS extends "
                       + ", ".join(sorted(self.package.parents[name])))
        for member in node.get("inner", []):
            if member["kind"] == "ObjCMethodDecl":
                self.method(name, member)

    def enumeration(self, node):
        # An option set is a number with a name, and its values stand in an enumeration of that type.
        owner = node.get("name") or node.get("fixedUnderlyingType", {}).get("qualType")
        value = -1
        for member in node.get("inner", []):
            if member["kind"] == "EnumConstantDecl":
                self.count("enumerators")
                explicit = constant(member)
                value = value + 1 if explicit is None else explicit
                self.enumerator(owner, member["name"], value)

    def enumerator(self, owner, name, value):
        if name in KNOWN_VALUES and name in self.package.constants:
            self.used.add(name)
            actual = KNOWN_VALUES[name]
        else:
            values = self.package.enums.get(owner, {})
            key = max((k for k in values if name.endswith(k)), key=len, default=None)
            if key is None:
                return self.fault(name, "macOS has no such enumerator")
            actual = values[key]
        if actual != value:
            self.fault(name, f"is declared as {value}, but is {actual} on macOS")

    def function(self, node):
        self.count("functions")
        name = node["name"]
        if name not in self.package.functions:
            return self.fault(f"{name}()", "macOS has no such function")
        expected, expected_result = self.package.functions[name]
        kind = node["type"]["qualType"].partition(" (")
        parameters = [p["type"]["qualType"] for p in node.get("inner", []) if p["kind"] == "ParmVarDecl"]
        if len(parameters) != len(expected) or not agrees(kind[0], expected_result, self.package) or not all(
                agrees(a, b, self.package) for a, b in zip(parameters, expected)):
            self.fault(f"{name}()", f"is declared {node['type']['qualType']}, but macOS has "
                       f"{expected_result} ({', '.join(expected)})")

    def constant(self, node):
        self.count("constants")
        name = node["name"]
        if name not in self.package.constants:
            return self.fault(name, "macOS has no such constant")
        if not agrees(node["type"]["qualType"], self.package.constants[name], self.package):
            self.fault(name, f"is declared {node['type']['qualType']}, but macOS has {self.package.constants[name]}")

    def run(self, nodes):
        for node in nodes:
            kind = node["kind"]
            if kind in ("ObjCInterfaceDecl", "ObjCProtocolDecl"):
                if "super" in node or kind == "ObjCProtocolDecl":  # else it is only announced
                    self.container(node)
            elif kind == "EnumDecl":
                self.enumeration(node)
            elif kind == "FunctionDecl":
                self.function(node)
            elif kind == "VarDecl":
                self.constant(node)
        for what in [*KNOWN, *KNOWN_VALUES]:
            if what not in self.used:
                self.faults.append(f"{what}: is listed as an exception, but none is needed")


def constant(node):
    if node.get("kind") == "ConstantExpr" and "value" in node:
        return int(node["value"])
    return next((v for v in map(constant, node.get("inner", [])) if v is not None), None)


def declared(sdk, compiler):
    """The declarations in our headers, in clang's own words."""
    headers = sorted(sdk.glob("*.framework/Headers/**/*.h"))
    names = [re.sub(r"\.framework/Headers", "", str(header.relative_to(sdk))) for header in headers]
    source = "".join(f"#import <{name}>\n" for name in names)
    command = [*map(str, compiler), "-fsyntax-only", "-Xclang", "-ast-dump=json", "-x", "objective-c++", "-"]
    tree = json.loads(subprocess.run(command, input=source, capture_output=True, text=True, check=True).stdout)
    return list(ours(tree, str(sdk), [""]))


def ours(node, folder, file):
    """The nodes that stand in files below `folder`. Clang names a file only where it changes."""
    for child in node.get("inner", []):
        for location in (child.get("loc", {}), child.get("range", {}).get("begin", {})):
            location = location.get("expansionLoc", location)
            file[0] = location.get("file", file[0])
        if child["kind"] == "LinkageSpecDecl":
            yield from ours(child, folder, file)
        elif file[0].startswith(folder):
            yield child
