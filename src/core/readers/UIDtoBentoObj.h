#pragma once

#include <QtGlobal>

// One node of an identifier tree of a media database: a short identifier
// (bytes 16..23 of a UMID, kept as the 8 stored bytes read as one 64-bit
// number) and the Bento object that describes it. The trees hold nodes by
// value in sorted tables, so a comparison never meets a missing node.
class UIDtoBentoObj {
  public:
    UIDtoBentoObj() = default;
    UIDtoBentoObj(quint64 key, quint32 objectID) : key_(key), objectID_(objectID) {}

    quint64 key() const { return key_; }
    quint32 objectID() const { return objectID_; }
    // Equal when both 32-bit halves are.
    bool isEqualKey(const UIDtoBentoObj& other) const {
        return quint32(key_) == quint32(other.key_) &&
               quint32(key_ >> 32) == quint32(other.key_ >> 32);
    }
    bool isLiteThan(const UIDtoBentoObj& other) const { return key_ < other.key_; }

  private:
    quint64 key_ = 0;
    quint32 objectID_ = 0;
};
