// sheetjs_tasks.js TASK FOLDER RESULT; cells of CSV are read as text.
const fs = require("fs");
const XLSX = require("xlsx");

const [task, folder, result] = process.argv.slice(2);
if (task === "to-xlsx") {
  const text = fs.readFileSync(`${folder}/orders.csv`, "utf8");
  const workbook = XLSX.read(text, { type: "string", raw: true, dense: true });
  XLSX.writeFile(workbook, result, { bookType: "xlsx", bookSST: true, compression: true });
} else {
  const workbook = XLSX.readFile(`${folder}/orders.xlsx`, { dense: true });
  fs.writeFileSync(result, XLSX.utils.sheet_to_csv(Object.values(workbook.Sheets)[0]));
}
