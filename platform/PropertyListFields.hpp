#pragma once
// Small keyed records (the activity record, the widget digest) on top of the property-list
// reader and writer: the values of a dictionary looked up by key, and a dictionary written
// from key-value pairs.
//
// Contract: pure functions over the reader or writer given, which keep their own
// contracts (a reader may be shared between threads; a writer may not).

#include <initializer_list>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/PropertyListReader.hpp"
#include "platform/PropertyListWriter.hpp"

namespace veldan::platform {

// The value of each of `keys` in the dictionary `object`, in the order of `keys`; an
// invalid object for a key that is absent. Nothing when `object` is not a dictionary.
// Keys are ASCII; the first entry with a key wins.
std::optional<std::vector<PropertyListReader::Object>> dictionaryFields(
    const PropertyListReader& reader, PropertyListReader::Object object,
    std::initializer_list<std::string_view> keys);

// A dictionary of `fields` (key, value reference), in that order.
PropertyListWriter::Ref writeDictionary(
    PropertyListWriter& writer,
    const std::vector<std::pair<std::string_view, PropertyListWriter::Ref>>& fields);

}  // namespace veldan::platform
