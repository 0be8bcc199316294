// The fields of one object in a JSON document that a person may have written.
#pragma once

#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

// Every complaint is a UserError that names the object and the field.
class JsonFields {
  public:
    // `name` is the object's in messages. The object outlives this.
    JsonFields(const nlohmann::ordered_json& object, std::string name);

    bool has(const char* key) const { return m_object.contains(key); }
    const nlohmann::ordered_json& at(const char* key) const;
    std::string text(const char* key) const;
    double number(const char* key) const;
    int pixels(const char* key) const;  // a whole number
    bool flag(const char* key) const;

    // `values`, which stand in the field `key`, as `width` whole numbers.
    std::vector<int> row(const nlohmann::ordered_json& values, std::size_t width,
                         const char* key) const;

    // A number from 0 to `most`.
    double numberUpTo(double most, const char* key) const;
    int pixelsUpTo(int most, const char* key) const;

    void allowOnly(std::initializer_list<const char*> keys) const;
    // The format has `keys` from version `first` on.
    void requireVersion(int version, int first, std::initializer_list<const char*> keys) const;
    [[noreturn]] void fail(const std::string& what) const;

    const std::string& name() const { return m_name; }

  private:
    int pixelsIn(const nlohmann::ordered_json& value, const char* key) const;

    const nlohmann::ordered_json& m_object;
    std::string m_name;
};
