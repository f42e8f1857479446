// SPDX-License-Identifier: MIT
// Dictionaries as JSON text and back.
#include "MaxApiProbe.h"
#include "support/HostProgram.h"

namespace {

t_dictionary* Parsed(const std::string& text) {
    t_dictionary* d = nullptr;
    char fault[256] = "";
    const t_max_err error = dictobj_dictionaryfromstring(&d, text.c_str(), 1, fault);
    EXPECT_EQ(d == nullptr, error != MAX_ERR_NONE && *fault != '\0') << text;
    return d;
}

TEST_F(MaxApiTest, DictionariesAreWrittenInMaxsManner) {
    const Tests::TemporaryFolder folder;
    const std::string file = (folder / "state.json").string();
    t_dictionary* const d = dictionary_new();
    auto atoms = HostApi::ParseAtoms("1 2. 0.1 \"two words\" -1e30");
    dictionary_appendatoms(d, gensym("list"), static_cast<max_long>(atoms.size()), atoms.data());
    dictionary_appendsym(d, gensym("quoted \"key\""), gensym("a\\b\n\x01\xC3\xA9"));
    t_dictionary* const inner = dictionary_new();
    dictionary_appendlong(inner, gensym("deep"), -7);
    dictionary_appenddictionary(d, gensym("inner"), reinterpret_cast<t_object*>(inner));
    dictionary_appendfloat(d, gensym("last"), 3);
    ASSERT_EQ(dictionary_write(d, file.c_str(), 0), MAX_ERR_NONE);
    const std::string text = Tests::ReadText(file);
    EXPECT_EQ(text,
              "{\n\t\"list\" : [ 1, 2.0, 0.1, \"two words\", -1e+30 ],\n"
              "\t\"quoted \\\"key\\\"\" : \"a\\\\b\\n\\u0001\xC3\xA9\",\n"
              "\t\"inner\" : \t{\n\t\t\"deep\" : -7\n\t}\n,\n\t\"last\" : 3.0\n}\n");
    object_free(d);

    t_dictionary* back = nullptr;
    ASSERT_EQ(dictionary_read(file.c_str(), 0, &back), MAX_ERR_NONE);
    ASSERT_EQ(dictionary_write(back, file.c_str(), 0), MAX_ERR_NONE);
    EXPECT_EQ(Tests::ReadText(file), text);
    object_free(back);
}

TEST_F(MaxApiTest, JsonOfOthersIsReadAndSlipsAreRefused) {
    const std::size_t before = HostApi::CountObjects();
    t_dictionary* const d = Parsed(
        "\xEF\xBB\xBF {\"a\":[[1,2],{\"b\":true},],\"u\":\"\\u00e9\\ud83d\\ude00\",\"n\":null,}");
    ASSERT_NE(d, nullptr);
    t_symbol* text = nullptr;
    EXPECT_EQ(dictionary_getsym(d, gensym("u"), &text), MAX_ERR_NONE);
    EXPECT_STREQ(text->s_name, "\xC3\xA9\xF0\x9F\x98\x80");
    EXPECT_EQ(dictionary_getentrycount(d), 2);
    object_free(d);
    for (const char* slip : {"", "[]", "{", "{\"a\"}", "{\"a\":}", "{\"a\":1 \"b\":2}",
                             "{\"a\":1}x", "{\"a\":nan}", "{\"a\":\"\\x\"}", "{\"a\":\"\\ud83d\"}",
                             "{\"a\":[1,{\"b\":[}]}", "{\"a\":\"open}", "{\"a\\u0000b\":1}"})
        EXPECT_EQ(Parsed(slip), nullptr) << slip;
    EXPECT_EQ(Parsed("{\"a\":" + std::string(100000, '[')), nullptr);
    EXPECT_EQ(HostApi::CountObjects(), before) << "what was made before a slip is freed";
}

TEST_F(MaxApiTest, DictionariesFindTheirKeysHoweverManyThereAre) {
    constexpr int kCount = 200'000;
    const auto key = [](int k) { return "k" + std::to_string(k * 7919 % kCount); };
    std::string text = "{";
    for (int k = 0; k < kCount; ++k) text += "\"" + key(k) + "\":" + std::to_string(k) + ",";
    t_dictionary* const d = Parsed(text + "\"" + key(5) + "\":-5}");
    ASSERT_EQ(dictionary_getentrycount(d), kCount);
    // Behind an entry that goes, the others move up and keep their keys.
    dictionary_deleteentry(d, gensym(key(3).c_str()));
    max_long count = 0;
    t_symbol** keys = nullptr;
    ASSERT_EQ(dictionary_getkeys_ordered(d, &count, &keys), MAX_ERR_NONE);
    ASSERT_EQ(count, kCount - 1);
    for (int k = 0, place = 0; k < kCount; ++k) {
        if (k == 3) continue;
        t_atom_long value = 0;
        ASSERT_EQ(dictionary_getlong(d, keys[place], &value), MAX_ERR_NONE);
        ASSERT_EQ(value, k == 5 ? -5 : k);
        ASSERT_EQ(keys[place++]->s_name, key(k));
    }
    EXPECT_FALSE(dictionary_hasentry(d, gensym(key(3).c_str())));
    dictionary_freekeys(d, count, keys);
    dictionary_clear(d);
    EXPECT_FALSE(dictionary_hasentry(d, gensym(key(0).c_str())));
    object_free(d);
}

}  // namespace
