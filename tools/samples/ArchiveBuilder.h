// Writes a JSON value as a non-keyed archive of property-list objects, in either byte order.
#pragma once

#include <nlohmann/json.hpp>

#include <map>
#include <string>
#include <vector>

#include "platform/base/ByteWriter.h"

namespace osa::samples {

enum class ByteOrder { little, big };

/// Objects become dictionaries, arrays arrays, strings, integers, reals and Booleans what they are.
class ArchiveBuilder {
  public:
    explicit ArchiveBuilder(ByteOrder order) : order_(order) {}

    std::string build(const nlohmann::ordered_json& root);

  private:
    struct ClassName {
        const char* name;
        int version;
    };

    void integer(std::int64_t value);
    void rawString(const std::string& text);
    /// A string of the shared table: itself the first time, its number afterwards.
    void sharedString(const std::string& text);
    void reference(int number);
    /// The class with its ancestors, as far as they are new.
    void classChain(const std::vector<ClassName>& chain);
    void value(const nlohmann::ordered_json& json);
    void string(const std::string& text);
    void number(const char* encoding, const nlohmann::ordered_json& json);
    void dictionary(const nlohmann::ordered_json& json);
    void array(const nlohmann::ordered_json& json);
    void beginObject(const std::vector<ClassName>& chain);
    void count(std::size_t items);

    ByteOrder order_;
    ByteWriter out_;
    std::map<std::string, int> strings_;
    std::map<std::string, int> classes_;
    std::map<std::string, int> cStrings_;
    int objects_ = 0;
};

}  // namespace osa::samples
