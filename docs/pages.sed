# The pages, for Doxygen: blocks of dot source are pictures; links lead to pages of the reference, or to their names where
# it has none; the headers in the table of README lead to what they declare.
/^```dot$/,/^```$/ { s/^```dot$/@dot/; s/^```$/@enddot/ }
s/\[\([^]]*\)\](\(\.\.\/\)\?examples[^)]*)/`\1`/g
/^| [a-z].*\.h`/ {
    s/`communication\/\(\w*\)\.h`/@ref Communication::\1 "\1.h"/g
    s/`hxspinlocker\.h`/@ref HXSpinLocker "hxspinlocker.h"/
    s/`Product\.h`/@ref BM_HXCommon::Product "Product.h"/
    s/`HXCommonQml\.h`/@ref registerHXCommonTypes "HXCommonQml.h"/
    s/`\(\w\+\)\.h`/@ref \1 "\1.h"/g
}
