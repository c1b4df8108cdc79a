#include "clients/stream/random-identity.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <random>

namespace orvlog::client_stream
{

namespace
{

uint32_t give_number(ORVLOG_IdentityObject* object, uint8_t* session_id)
{
    std::memcpy(session_id, object + 1, 16);
    return 1;
}

const ORVLOG_IdentityTable table = {{}, give_number};

}  // namespace

RandomIdentity::RandomIdentity()
    : RandomIdentity(
          []
          {
              std::random_device random;
              std::array<uint8_t, 16> number{};
              for (uint8_t& byte : number)
                  byte = static_cast<uint8_t>(random());
              return number;
          }())
{
}

RandomIdentity::RandomIdentity(const std::array<uint8_t, 16>& number)
{
    static_assert(offsetof(Object, number) == sizeof(ORVLOG_IdentityObject));
    std::ranges::copy(number, object_.number);
    object_.head.functions = &table;
    source_.object = &object_.head;
}

const ORVLOG_IdentitySource* RandomIdentity::source() const
{
    return &source_;
}

}  // namespace orvlog::client_stream
