// polars_tasks.js TASK FOLDER RESULT; every cell is read as text.
const module_ = require("nodejs-polars");
const pl = module_.default ?? module_;

const [task, folder, result] = process.argv.slice(2);
const read = (name) => pl.readCSV(`${folder}/${name}.csv`, { inferSchemaLength: 0 });
const matching = (table) =>
  table.filter(pl.col("status").eq(pl.lit("shipped")).and(pl.col("quantity").cast(pl.Int32).gt(10)));
const joined = (table) => table.join(read("customers"), { on: "customer_id", how: "inner" });
const ordered = (table) => table.withColumn(pl.col("unit_price").cast(pl.Float64).alias("price_as_number"))
  .sort({ by: ["country", "price_as_number"], descending: [false, true] }).drop("price_as_number");

if (task === "to-json") {
  read("orders").writeJSON(result, { format: "json" });
} else {
  const make = {
    copy: () => read("orders"),
    filter: () => matching(read("orders")),
    sort: () => ordered(read("orders")),
    join: () => joined(read("orders")),
    chain: () => ordered(joined(matching(read("orders")))),
    "from-json": () => pl.readJSON(`${folder}/orders.json`, { format: "json" }),
  };
  make[task]().writeCSV(result);
}
