// Every change of a document, and that it changes what it says and nothing else.
#include "MainCfChecks.h"

#include "FuzzInput.h"

using vcssim::CfDocument;

namespace {

using vcssim::CfAttribute;
using vcssim::CfBlock;
using vcssim::CfElement;
using vcssim::CfGroup;
using vcssim::CfLink;
using vcssim::CfValue;

const std::size_t MaxObjects = 8; // of a kind: large inputs are not more interesting

std::string Told(const CfValue& value) {
    if (!value.isList) {
        return '"' + value.text + '"';
    }
    std::string text = "{";
    for (const CfElement& element : value.elements) {
        text += element.key + (element.hasValue ? "=" + Told(element.value) : "") + ",";
    }
    return text + "}";
}

std::string Told(const CfBlock& block) {
    std::string text = block.keyword + " " + block.name + "(";
    for (const CfAttribute& attribute : block.attributes) {
        text += attribute.name + "@" + attribute.system + "=" + Told(attribute.value) + ";";
    }
    return text + ")\n";
}

// A value that can be written: without line ends.
std::string ValueFrom(const std::string& text) {
    std::string value = text.substr(0, 40);
    for (char& c : value) {
        c = c == '\r' || c == '\n' ? ' ' : c;
    }
    return value;
}

void ChangeAttributes(const CfDocument& document, const CfBlock& resource, const std::string& value) {
    CfDocument changed = document;
    const std::string name = resource.attributes.empty() ? "Fuzzed" : resource.attributes.front().name;
    const std::string system = resource.attributes.empty() ? "" : resource.attributes.front().system;
    const std::string resourceName = resource.name;
    changed.SetAttribute(resourceName, name, system, vcssim::QuotedCf(value));
    FUZZ_CHECK(changed.ResourceNamed(resourceName)->Find(name, system)->value.text == value);
    FUZZ_CHECK(ToldWithout(changed, resourceName) == ToldWithout(document, resourceName));

    changed.SetAttribute(resourceName, name, "FuzzedSystem", "{ a, " + vcssim::QuotedCf(value) + " = 1 }");
    const CfAttribute* const local = changed.ResourceNamed(resourceName)->Find(name, "FuzzedSystem");
    FUZZ_CHECK(local && local->value.elements.size() == 2 && local->value.elements[1].key == value);

    changed.RemoveAttribute(resourceName, name);
    FUZZ_CHECK(!changed.ResourceNamed(resourceName)->Has(name));
    FUZZ_CHECK(ToldWithout(changed, resourceName) == ToldWithout(document, resourceName));
}

void ChangeGroup(const CfDocument& document, const CfGroup& group, const std::string& value) {
    const std::string added = "FuzzedResource";
    if (document.ResourceNamed(added)) {
        return;
    }
    CfDocument changed = document;
    changed.AddResource(group.block.name, "FuzzedType", added);
    FUZZ_CHECK(changed.ResourceNamed(added) && changed.GroupOf(added)->block.name == group.block.name);
    FUZZ_CHECK(ToldWithout(changed, added) == ToldWithout(document, added));
    const std::string withResource = ToldWithout(changed, "");
    changed.SetAttribute(added, "Enabled", "", "0");
    changed.SetAttribute(added, "Text", "", vcssim::QuotedCf(value));
    changed.RemoveAttribute(added, "Enabled");
    changed.RemoveAttribute(added, "Text");
    FUZZ_CHECK(ToldWithout(changed, "") == withResource);
    std::size_t count = 0;
    for (const CfBlock& resource : group.resources) {
        changed.AddLink(added, resource.name);
        FUZZ_CHECK(changed.GroupOf(added)->links.size() == group.links.size() + 1);
        changed.RemoveLink(added, resource.name);
        FUZZ_CHECK(ToldWithout(changed, "") == withResource);
        if (++count == MaxObjects) {
            break;
        }
    }
    changed.RemoveResource(added);
    FUZZ_CHECK(ToldWithout(changed, "") == ToldWithout(document, ""));
}

void Change(const CfDocument& document, const std::string& value) {
    std::size_t count = 0;
    for (const CfGroup& group : document.Groups()) {
        ChangeGroup(document, group, value);
        for (const CfBlock& resource : group.resources) {
            ChangeAttributes(document, resource, value);
            CfDocument changed = document;
            changed.RemoveResource(resource.name);
            FUZZ_CHECK(!changed.ResourceNamed(resource.name));
            FUZZ_CHECK(ToldWithout(changed, "") == ToldWithout(document, resource.name));
            if (++count >= MaxObjects) {
                return;
            }
        }
        for (const CfLink& link : group.links) {
            CfDocument changed = document;
            changed.RemoveLink(link.parent, link.child);
            FUZZ_CHECK(changed.GroupNamed(group.block.name)->links.size() == group.links.size() - 1);
        }
    }
}

} // namespace

std::string ToldWithout(const CfDocument& document, const std::string& without) {
    std::string text;
    for (const CfBlock& block : document.Clusters()) {
        text += Told(block);
    }
    for (const CfBlock& block : document.Systems()) {
        text += Told(block);
    }
    for (const CfGroup& group : document.Groups()) {
        text += Told(group.block);
        for (const CfBlock& resource : group.resources) {
            text += resource.name == without ? "" : Told(resource);
        }
        for (const CfLink& link : group.links) {
            text += link.parent == without || link.child == without ? "" : link.parent + ">" + link.child + "\n";
        }
        for (std::size_t i = 0; i < group.requires_.size(); ++i) {
            text += group.requires_[i].child + ":" + group.relationships[i] + "\n";
        }
    }
    return text;
}

void CheckMainCf(const std::string& text) {
    CfDocument document;
    try {
        document = CfDocument(text);
    } catch (const vcssim::CfError& error) {
        FUZZ_CHECK(error.Line() >= 1 && error.what()[0] != '\0');
        return;
    }
    FUZZ_CHECK(document.Text() == text);
    Change(document, ValueFrom(text));
}
