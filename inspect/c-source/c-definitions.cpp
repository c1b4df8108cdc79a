#include "inspect/c-source/c-records.h"
#include "inspect/c-source/c-text.h"

#include <utility>

namespace orvlog::inspect
{

namespace
{

constexpr std::string_view kConstant = "const ";

}  // namespace

std::string CRecords::take()
{
    return std::exchange(definitions_, {});
}

std::string CRecords::take_loads()
{
    return std::exchange(loads_, {});
}

void CRecords::start_call(uint64_t number)
{
    number_ = std::to_string(number);
    names_.clear();
    texts_.clear();
}

CRecords::State CRecords::push()
{
    return {take_loads(), number_, std::exchange(names_, {}), std::exchange(texts_, {})};
}

// What is left of an inner call that can't be made again may be pointed to later.
void CRecords::pop(State outer)
{
    loads_ = outer.loads + loads_;
    number_ = std::move(outer.number);
    names_ = std::move(outer.names);
    texts_ = std::move(outer.texts);
}

std::string CRecords::fresh(std::string_view base)
{
    const uint32_t count = ++names_[std::string(base)];
    std::string name = std::string(base) + "_" + number_;
    return count == 1 ? name : name + "_" + std::to_string(count);
}

std::string CRecords::define_own(const std::string& type, std::string_view base, const std::string& initialiser)
{
    const std::string name = fresh(base);
    const std::string named = named_type(type);
    definitions_ += "static " + named + " " + name + " = " + initialiser + ";\n";
    return "&" + name;
}

// Types that a macro makes are made once; each would be another one, which takes the compiler time.
std::string CRecords::named_type(const std::string& type)
{
    constexpr size_t kMost = 1000;
    const size_t begin = type.starts_with(kConstant) ? kConstant.size() : 0;
    const std::string made = type.substr(begin);
    if (!made.ends_with(')') || (types_.size() >= kMost && !types_.contains(made)))
        return type;
    std::string name = made.substr(0, made.size() - 1);
    for (char& c : name)
        c = c == '(' || c == ',' ? '_' : c;
    std::erase(name, ' ');
    if (types_.insert(made).second)
        definitions_ += "typedef " + made + " " + name + ";\n";
    return type.substr(0, begin) + name;
}

std::string CRecords::define(const std::string& type, std::string_view base, const std::string& initialiser)
{
    if (!type.starts_with(kConstant))
        return define_own(type, base, initialiser);
    const std::string what = type + " = " + initialiser;
    std::string expression = known(what);
    if (expression.empty())
    {
        expression = define_own(type, base, initialiser);
        remember(what, expression);
    }
    return expression;
}

// Empty if there is none.
std::string CRecords::known(const std::string& what) const
{
    const auto found = known_.find(what);
    return found != known_.end() ? found->second : std::string();
}

// As many as a fixed amount of memory holds; then all are forgotten and may be defined once more.
void CRecords::remember(const std::string& what, const std::string& expression)
{
    constexpr size_t kMost = size_t{32} << 20;
    const size_t size = what.size() + expression.size();
    if (size > kMost)
        return;
    if (known_size_ + size > kMost)
        known_.clear();
    known_size_ = known_.empty() ? size : known_size_ + size;
    known_.emplace(what, expression);
}

void CRecords::add_load(const std::string& to, CDataKind kind, std::span<const uint8_t> bytes)
{
    constexpr const char* kFiles[] = {"IMAGES", "PROFILES", "GLYPHS"};
    loads_ += "    LOAD(" + to + ", " + std::to_string(bytes.size()) + ", " + kFiles[static_cast<size_t>(kind)] + ", " +
              c_uint64(put_(kind, bytes)) + "),\n";
}

std::string CRecords::bytes(CDataKind kind, std::span<const uint8_t> bytes, std::string_view base)
{
    const std::string what = "bytes " + std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    std::string name = known(what);
    if (!name.empty())
        return name;
    name = fresh(std::string(base) + "_bytes");
    definitions_ += "static _Alignas(8) uint8_t " + name + "[" + std::to_string(bytes.size()) + "];\n";
    add_load(name, kind, bytes);
    remember(what, name);
    return name;
}

}  // namespace orvlog::inspect
