// What each product code means to every room that draws or reads it: its kind, the block of the
// grid file it comes from, how classes are formed and coloured, its colour file, unit, title and
// threshold format. product_of is the only place that compares product codes.
#ifndef PRODUCT_TABLE_H
#define PRODUCT_TABLE_H

// Classes come from the byte grid `pty`, values from the float grid `data`.
enum class ProductKind { Classes, Values };

// How a code byte (stations in the low, radar in the high 4 bits) becomes a class.
enum class ClassRule { None, RNSN, RNSN1, RNSN2, RNEX, AREA };

// The class table whose colours and names a class product shows.
enum class ClassTable { RNEX, RNSN };

struct PRODUCT {
    const char *code;          // "" for the rows of codes the table does not know
    ProductKind kind;
    int block;                 // where its block starts, in grid sizes (nx x ny bytes) after the header
    ClassRule rule;            // classes: the rule of each cell; values: none
    ClassTable table;          // classes: the table of colours and names
    ClassRule marking;         // values: classes that mark light rain (RNSN for the rain products)
    double value_offset;       // values: a stored v is v x 0.01 + this
    const char *color_file;    // values: the colour file under the colour directory; null for none
    bool monthly_shift;        // values: the thresholds slide with the month of the data time
    const char *unit;          // legend unit
    const char *title;         // title band text, EUC-KR; "" for none
    bool whole_thresholds;     // legend thresholds always without decimals; else one below 5
};

// A stored int16 of a value block as the value: v x 0.01 + the product's value_offset, formed in
// double precision and kept as a float.
inline float scaled_value(int stored, double value_offset) { return (float)(stored * 0.01 + value_offset); }

// Values at or below this are missing.
constexpr float MISSING_LIMIT = -299.999f;

// The class of a code byte (stations in the low, radar in the high 4 bits) by `rule`; 0 is no
// class, and a rule of None gives 0 everywhere.
unsigned char class_of_code(ClassRule rule, unsigned char b);

// The products the table knows, in its order, for rooms that go through all of them.
int product_count();
const PRODUCT &product_at(int k);

// The row of a product code: an exact match, else the row of unknown class products for a code
// that contains "RNSN", else the row of unknown value products.
const PRODUCT &product_of(const char *obs);

#endif
