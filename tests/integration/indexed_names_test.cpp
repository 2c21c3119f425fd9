// The three indexed walks: the count travels back through index on success
// and on -24 only; -23 leaves "" and the position asked for.
#include "support/fixture.hpp"

#define S "Ljava/lang/String;"
#define OUT b.bytes, &b.len

TEST_F(Bridge, IndexedNamesReportCountAndBoundaries) {
    struct Collection {
        const char *count;
        const char *name;
        int (*walk)(int *, char *, size_t *);
    };
    const Collection collections[] = {
        {"getProjectParamCount", "getProjectParamName",
         [](int *i, char *b, size_t *l) { return velmora_getProjectParamName(5, i, b, l); }},
        {"getResultFileCount", "getResultFileName",
         [](int *i, char *b, size_t *l) { return velmora_getResultFiles(5, i, b, l); }},
        {"getStreamedResultFilesCount", "getStreamedResultFileName",
         [](int *i, char *b, size_t *l) { return velmora_getStreamedResultFiles(5, i, b, l); }},
    };
    struct Step {
        const char *countIs;
        const char *nameIs;
        int index;
        size_t capacity;
        int status;
        int indexAfter;
        size_t lenAfter;
        const char *text;  // nullptr: buffer untouched
    };
    const int kOutOfRange = VELMORA_STATUS_FILE_INDEX_OUT_OF_BOUNDS, kSmall = VELMORA_STATUS_BUFFER_TOO_SMALL;
    const Step steps[] = {
        {"3", "name-one", -1, 64, kOutOfRange, 3, 1, ""},
        {"3", "name-one", 3, 64, kOutOfRange, 3, 1, ""},
        {"3", "name-one", 3, 0, kOutOfRange, 3, 1, nullptr},
        {"0", "name-one", 0, 64, kOutOfRange, 0, 1, ""},
        {"3", "name-one", 1, 9, 0, 3, 9, "name-one"},
        {"3", "name-one", 1, 8, kSmall, 1, 9, ""},
        {"3", "name-one", 1, 0, kSmall, 1, 9, nullptr},
        {"3", "null", 2, 64, 0, 3, 1, ""},
        {"3", "throw", 2, 64, VELMORA_STATUS_JAVA_EXCEPTION, 2, 64, nullptr},
        {"throw", "name-one", 2, 64, VELMORA_STATUS_JAVA_EXCEPTION, 2, 64, nullptr},
    };
    for (const Collection &c : collections) {
        for (const Step &s : steps) {
            sdk::script(c.count, {s.countIs});
            sdk::script(c.name, {s.nameIs});
            Buffer b(s.capacity);
            int index = s.index;
            const std::string where = std::string(c.name) + " at " + std::to_string(s.index) + " of " + s.countIs;
            EXPECT_EQ(c.walk(&index, OUT), s.status) << where;
            EXPECT_EQ(index, s.indexAfter) << where;
            EXPECT_EQ(b.len, s.lenAfter) << where;
            EXPECT_EQ(b.untouched(), s.text == nullptr) << where;
            if (s.text) {
                EXPECT_EQ(b.text(), s.text) << where;
            }
            std::vector<std::string> expected = {std::string(c.count) + "(I)I 5"};
            if (s.status != kOutOfRange && std::string(s.countIs) != "throw")
                expected.push_back(std::string(c.name) + "(II)" S " 5, " + std::to_string(s.index));
            EXPECT_EQ(sdk::journal(), expected) << where;
        }
        // A null index pointer reads as out of range.
        sdk::script(c.count, {"3"});
        Buffer b(64);
        EXPECT_EQ(c.walk(nullptr, OUT), kOutOfRange) << c.name;
        EXPECT_EQ(b.len, 1u) << c.name;
        sdk::journal();
    }
    // The streamed count has its own forwarder and agrees with the walk.
    sdk::script("getStreamedResultFilesCount", {"4"});
    int index = -1;
    Buffer b(64);
    EXPECT_EQ(velmora_getStreamedResultFiles(5, &index, OUT), kOutOfRange);
    EXPECT_EQ(velmora_getStreamedResultFilesCount(5), index);
}
