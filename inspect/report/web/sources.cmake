# What the report's script is joined from, in this order: each file knows those before it.
set(ORVLOG_REPORT_SCRIPTS
    dom.js
    blocks.js
    log-model.js
    compare-model.js
    virtual-tree.js
)
