#pragma once

#include <QtGlobal>

#include <functional>
#include <utility>

// Settings of an ordered tree from untyped keys to 32-bit values: whether equal
// keys are kept, the entry counts and the two comparison rules. It carries no
// nodes and no operations of its own.
class TarnRBTree_void_u32t {
  public:
    using Rule = std::function<bool(const void* a, const void* b)>;

    bool AllowEQkeys() const { return m_allowEQkeys; }
    void setAllowEQkeys(bool allow) { m_allowEQkeys = allow; }
    quint64 TreeNodeCount() const { return m_nodeCount; }
    void setTreeNodeCount(quint64 count) { m_nodeCount = count; }
    quint64 TreeEqualNodeCount() const { return m_equalNodeCount; }
    void setTreeEqualNodeCount(quint64 count) { m_equalNodeCount = count; }
    const Rule& EQBlock() const { return m_eq; }
    void setEQBlock(Rule rule) { m_eq = std::move(rule); }
    const Rule& LTBlock() const { return m_lt; }
    void setLTBlock(Rule rule) { m_lt = std::move(rule); }

  private:
    bool m_allowEQkeys = true;
    quint64 m_nodeCount = 0;
    quint64 m_equalNodeCount = 0;
    Rule m_eq;
    Rule m_lt;
};
