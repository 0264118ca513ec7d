#include "platform/PropertyListFields.hpp"

namespace veldan::platform {

std::optional<std::vector<PropertyListReader::Object>> dictionaryFields(
    const PropertyListReader& reader, PropertyListReader::Object object,
    std::initializer_list<std::string_view> keys) {
    auto entries = reader.dictionary(object);
    if (!entries) return std::nullopt;
    std::vector<PropertyListReader::Object> values(keys.size());
    for (size_t i = 0; i < entries->size(); ++i) {
        const auto key = entries->key(i);
        size_t field = 0;
        for (auto name : keys) {
            if (!values[field].valid() && reader.stringEquals(key, name)) {
                values[field] = entries->value(i);
                break;
            }
            ++field;
        }
    }
    return values;
}

PropertyListWriter::Ref writeDictionary(
    PropertyListWriter& writer,
    const std::vector<std::pair<std::string_view, PropertyListWriter::Ref>>& fields) {
    std::vector<PropertyListWriter::Ref> keys;
    std::vector<PropertyListWriter::Ref> values;
    keys.reserve(fields.size());
    values.reserve(fields.size());
    for (const auto& [key, value] : fields) {
        keys.push_back(writer.string(key));
        values.push_back(value);
    }
    return writer.dictionary(keys, values);
}

}  // namespace veldan::platform
