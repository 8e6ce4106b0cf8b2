// SPDX-License-Identifier: MIT AND Unicode-DFS-2016
// clang-format off
// Made of the Unicode character database 15.0.0 by vok/char/tables/generate.py; see vok/char/tables.h.
#include "vok/char/tables.h"

namespace vok::Char::detail {

const Name CATEGORIES[30] = {
    {"Cn", "Unassigned"}, {"Lu", "Uppercase_Letter"}, {"Ll", "Lowercase_Letter"},
    {"Lt", "Titlecase_Letter"}, {"Lm", "Modifier_Letter"}, {"Lo", "Other_Letter"},
    {"Mn", "Nonspacing_Mark"}, {"Mc", "Spacing_Mark"}, {"Me", "Enclosing_Mark"},
    {"Nd", "Decimal_Number"}, {"Nl", "Letter_Number"}, {"No", "Other_Number"},
    {"Pc", "Connector_Punctuation"}, {"Pd", "Dash_Punctuation"}, {"Ps", "Open_Punctuation"},
    {"Pe", "Close_Punctuation"}, {"Pi", "Initial_Punctuation"}, {"Pf", "Final_Punctuation"},
    {"Po", "Other_Punctuation"}, {"Sm", "Math_Symbol"}, {"Sc", "Currency_Symbol"},
    {"Sk", "Modifier_Symbol"}, {"So", "Other_Symbol"}, {"Zs", "Space_Separator"},
    {"Zl", "Line_Separator"}, {"Zp", "Paragraph_Separator"}, {"Cc", "Control"}, {"Cf", "Format"},
    {"Co", "Private_Use"}, {"Cs", "Surrogate"},
};

const Name SCRIPTS[164] = {
    {"Zzzz", "Unknown"}, {"Adlm", "Adlam"}, {"Ahom", "Ahom"}, {"Hluw", "Anatolian_Hieroglyphs"},
    {"Arab", "Arabic"}, {"Armn", "Armenian"}, {"Avst", "Avestan"}, {"Bali", "Balinese"},
    {"Bamu", "Bamum"}, {"Bass", "Bassa_Vah"}, {"Batk", "Batak"}, {"Beng", "Bengali"},
    {"Bhks", "Bhaiksuki"}, {"Bopo", "Bopomofo"}, {"Brah", "Brahmi"}, {"Brai", "Braille"},
    {"Bugi", "Buginese"}, {"Buhd", "Buhid"}, {"Cans", "Canadian_Aboriginal"}, {"Cari", "Carian"},
    {"Aghb", "Caucasian_Albanian"}, {"Cakm", "Chakma"}, {"Cham", "Cham"}, {"Cher", "Cherokee"},
    {"Chrs", "Chorasmian"}, {"Zyyy", "Common"}, {"Copt", "Coptic"}, {"Xsux", "Cuneiform"},
    {"Cprt", "Cypriot"}, {"Cpmn", "Cypro_Minoan"}, {"Cyrl", "Cyrillic"}, {"Dsrt", "Deseret"},
    {"Deva", "Devanagari"}, {"Diak", "Dives_Akuru"}, {"Dogr", "Dogra"}, {"Dupl", "Duployan"},
    {"Egyp", "Egyptian_Hieroglyphs"}, {"Elba", "Elbasan"}, {"Elym", "Elymaic"},
    {"Ethi", "Ethiopic"}, {"Geor", "Georgian"}, {"Glag", "Glagolitic"}, {"Goth", "Gothic"},
    {"Gran", "Grantha"}, {"Grek", "Greek"}, {"Gujr", "Gujarati"}, {"Gong", "Gunjala_Gondi"},
    {"Guru", "Gurmukhi"}, {"Hani", "Han"}, {"Hang", "Hangul"}, {"Rohg", "Hanifi_Rohingya"},
    {"Hano", "Hanunoo"}, {"Hatr", "Hatran"}, {"Hebr", "Hebrew"}, {"Hira", "Hiragana"},
    {"Armi", "Imperial_Aramaic"}, {"Zinh", "Inherited"}, {"Phli", "Inscriptional_Pahlavi"},
    {"Prti", "Inscriptional_Parthian"}, {"Java", "Javanese"}, {"Kthi", "Kaithi"},
    {"Knda", "Kannada"}, {"Kana", "Katakana"}, {"Kawi", "Kawi"}, {"Kali", "Kayah_Li"},
    {"Khar", "Kharoshthi"}, {"Kits", "Khitan_Small_Script"}, {"Khmr", "Khmer"}, {"Khoj", "Khojki"},
    {"Sind", "Khudawadi"}, {"Laoo", "Lao"}, {"Latn", "Latin"}, {"Lepc", "Lepcha"},
    {"Limb", "Limbu"}, {"Lina", "Linear_A"}, {"Linb", "Linear_B"}, {"Lisu", "Lisu"},
    {"Lyci", "Lycian"}, {"Lydi", "Lydian"}, {"Mahj", "Mahajani"}, {"Maka", "Makasar"},
    {"Mlym", "Malayalam"}, {"Mand", "Mandaic"}, {"Mani", "Manichaean"}, {"Marc", "Marchen"},
    {"Gonm", "Masaram_Gondi"}, {"Medf", "Medefaidrin"}, {"Mtei", "Meetei_Mayek"},
    {"Mend", "Mende_Kikakui"}, {"Merc", "Meroitic_Cursive"}, {"Mero", "Meroitic_Hieroglyphs"},
    {"Plrd", "Miao"}, {"Modi", "Modi"}, {"Mong", "Mongolian"}, {"Mroo", "Mro"}, {"Mult", "Multani"},
    {"Mymr", "Myanmar"}, {"Nbat", "Nabataean"}, {"Nagm", "Nag_Mundari"}, {"Nand", "Nandinagari"},
    {"Talu", "New_Tai_Lue"}, {"Newa", "Newa"}, {"Nkoo", "Nko"}, {"Nshu", "Nushu"},
    {"Hmnp", "Nyiakeng_Puachue_Hmong"}, {"Ogam", "Ogham"}, {"Olck", "Ol_Chiki"},
    {"Hung", "Old_Hungarian"}, {"Ital", "Old_Italic"}, {"Narb", "Old_North_Arabian"},
    {"Perm", "Old_Permic"}, {"Xpeo", "Old_Persian"}, {"Sogo", "Old_Sogdian"},
    {"Sarb", "Old_South_Arabian"}, {"Orkh", "Old_Turkic"}, {"Ougr", "Old_Uyghur"},
    {"Orya", "Oriya"}, {"Osge", "Osage"}, {"Osma", "Osmanya"}, {"Hmng", "Pahawh_Hmong"},
    {"Palm", "Palmyrene"}, {"Pauc", "Pau_Cin_Hau"}, {"Phag", "Phags_Pa"}, {"Phnx", "Phoenician"},
    {"Phlp", "Psalter_Pahlavi"}, {"Rjng", "Rejang"}, {"Runr", "Runic"}, {"Samr", "Samaritan"},
    {"Saur", "Saurashtra"}, {"Shrd", "Sharada"}, {"Shaw", "Shavian"}, {"Sidd", "Siddham"},
    {"Sgnw", "SignWriting"}, {"Sinh", "Sinhala"}, {"Sogd", "Sogdian"}, {"Sora", "Sora_Sompeng"},
    {"Soyo", "Soyombo"}, {"Sund", "Sundanese"}, {"Sylo", "Syloti_Nagri"}, {"Syrc", "Syriac"},
    {"Tglg", "Tagalog"}, {"Tagb", "Tagbanwa"}, {"Tale", "Tai_Le"}, {"Lana", "Tai_Tham"},
    {"Tavt", "Tai_Viet"}, {"Takr", "Takri"}, {"Taml", "Tamil"}, {"Tnsa", "Tangsa"},
    {"Tang", "Tangut"}, {"Telu", "Telugu"}, {"Thaa", "Thaana"}, {"Thai", "Thai"},
    {"Tibt", "Tibetan"}, {"Tfng", "Tifinagh"}, {"Tirh", "Tirhuta"}, {"Toto", "Toto"},
    {"Ugar", "Ugaritic"}, {"Vaii", "Vai"}, {"Vith", "Vithkuqi"}, {"Wcho", "Wancho"},
    {"Wara", "Warang_Citi"}, {"Yezi", "Yezidi"}, {"Yiii", "Yi"}, {"Zanb", "Zanabazar_Square"},
};

const std::size_t SCRIPT_COUNT = 164;

}  // namespace vok::Char::detail
