// duckdb.js THREADS(0 = default) TASK INDIR OUT; every cell is read as text
const { DuckDBInstance } = require("@duckdb/node-api");
const [threads, task, dir, out] = process.argv.slice(2);
const csv = (name) => `read_csv('${dir}/${name}.csv', header=true, all_varchar=true)`;
const filter = "quantity::INT > 10 AND status = 'shipped'";
const order = "ORDER BY country, unit_price::DOUBLE DESC";
const joined = `${csv("orders")} o JOIN ${csv("customers")} c USING (customer_id)`;
const queries = {
  T1: `FROM ${csv("orders")}`,
  T2: `FROM ${csv("orders")} WHERE ${filter}`,
  T3: `FROM ${csv("orders")} ${order}`,
  T4: `SELECT * FROM ${joined}`,
  T9: `SELECT * FROM ${joined} WHERE ${filter} ${order}`,
};
(async () => {
  const db = await DuckDBInstance.create(":memory:", threads === "0" ? {} : { threads });
  await (await db.connect()).run(`COPY (${queries[task]}) TO '${out}' (FORMAT csv, HEADER true)`);
})();
