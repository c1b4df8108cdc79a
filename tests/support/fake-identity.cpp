#include "tests/support/fake-identity.h"

namespace orvlog::test
{

FakeIdentity::FakeIdentity() : table_{}, object_{{&table_}, this}, source_{&object_.base}
{
    table_.orvlog_get_session_id = [](ORVLOG_IdentityObject* object, uint8_t* session_id) -> uint32_t
    {
        FakeIdentity* self = reinterpret_cast<Object*>(object)->owner;
        ++self->asked_;
        for (uint8_t i = 0; i < 16; ++i)
            session_id[i] = i;
        return self->refuses_ ? 0 : 1;
    };
}

}  // namespace orvlog::test
