// The two ends of a replay that does what the log says: the renderer behind the logger, and the client before it.

#pragma once

#include "clients/replay/script-facts.h"
#include "clients/replay/script.h"
#include "clients/replay/scripted-client.h"
#include "clients/replay/scripted-renderer.h"

namespace orvlog::replay
{

// Is made before the session that logs the replay, and ends behind it. For one replay.
struct AsLogged
{
    explicit AsLogged(ScriptFacts told) : facts(std::move(told)), client(script), renderer(script, client, facts) {}

    const ScriptFacts facts;
    Script script;
    ScriptedClient client;
    ScriptedRenderer renderer;
};

}  // namespace orvlog::replay
