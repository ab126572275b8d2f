#!/usr/bin/env python3
"""Make the example data in data/ anew. The same bytes come out every time.

Only Random.random() is used: it alone gives the same numbers in every version of Python.
"""
import csv
import datetime
import os
import random

HERE = os.path.dirname(os.path.abspath(__file__))
ORDERS = 5000
CUSTOMERS = 800
POSTINGS = 2400

PLACES = [("Germany", "Bremen"), ("Germany", "Köln"), ("Germany", "Leipzig"), ("France", "Lyon"),
          ("France", "Nîmes"), ("Spain", "Málaga"), ("Spain", "Bilbao"), ("Poland", "Gdańsk"),
          ("Poland", "Łódź"), ("Denmark", "Aarhus"), ("Sweden", "Malmö"), ("Italy", "Turin"),
          ("Ireland", "Cork"), ("Portugal", "Évora"), ("Austria", "Graz"), ("Greece", "Patras")]
FIRST = "Aisha Bruno Carla David Élise Fatima Göran Hanna Ivo Jana Kofi Lena Marek Nadia Oscar Petra Ruth Søren".split()
LAST = "Almeida Berg Conti Dupont Eriksen Fischer Garrido Hughes Ivanova Jansen Keller Lindqvist Murphy Nowak".split()
PRODUCTS = [("Desk lamp, brass", 39.90), ("Office chair", 189.00), ("Shelf 80 x 30", 54.50), ("Floor mat", 24.95),
            ('Monitor arm 27"', 99.00), ("Standing desk", 449.00), ("Paper tray", 12.40), ("Cable box, white", 18.75),
            ("Whiteboard 90 x 60", 72.00), ("Filing cabinet", 159.90), ("Footrest", 33.20), ("Coat stand", 61.80)]
STATUS = ["shipped"] * 10 + ["pending"] * 4 + ["cancelled"] * 2 + ["returned"]
NOTES = ["", "", "", "", "gift wrap", "leave with the neighbour", "call first, please", 'said "any time"',
         "second floor\nring twice", "invoice separately"]
SEGMENTS = ["Retail", "Wholesale", "Public sector", "Online"]

PAYEES = ["Stadtwerke Musterstadt", "Bäckerei Krümel", "Möbelhaus Grün", "Versicherung Nord", "Tankstelle Süd",
          "Buchhandlung Lesezeit", "Mobilfunk Drei", "Wochenmarkt", "Getränke Öztürk", "Autohaus Weiß",
          "Zahnärztin Dr. Müller", "Reisebüro Fernweh"]
PURPOSES = ["Rechnung {n}", "Kundennr. {n}; Vielen Dank", "Abschlag Strom\nZähler {n}", 'Bestellung "{n}"',
            "Lastschrift, Mandat {n}", "Kartenzahlung", "Miete und Nebenkosten", "Ratenzahlung {n}\nMahnstufe 0"]


class Chance:
    def __init__(self, seed):
        self.random = random.Random(seed).random

    def below(self, number):
        return int(self.random() * number)

    def of(self, items):
        return items[self.below(len(items))]


def write(name, header, rows):
    with open(os.path.join(HERE, "data", name), "w", encoding="utf-8", newline="") as f:
        out = csv.writer(f, lineterminator="\n")
        out.writerow(header)
        out.writerows(rows)


def orders():
    chance = Chance(1)
    start = datetime.date(2024, 1, 1)
    for number in range(ORDERS):
        day = start + datetime.timedelta(number * 730 // ORDERS)
        due = day + datetime.timedelta(3 + chance.below(28))
        country, city = chance.of(PLACES)
        product, price = chance.of(PRODUCTS)
        # A tenth of the orders names a customer who is not in the list.
        customer = 1 + int(chance.random() ** 2 * CUSTOMERS * 1.1)
        yield (10001 + number, f"C{customer:04d}", f"{day:%d/%m/%Y}", f"{due:%d/%m/%Y}", country, city, product,
               1 + int(chance.random() ** 2 * 40), f"{price:.2f}", chance.of(["", "", "", "5", "10"]),
               chance.of(STATUS), chance.of(NOTES))


def customers():
    chance = Chance(2)
    for number in range(CUSTOMERS):
        first, last = chance.of(FIRST), chance.of(LAST)
        since = datetime.date(2015, 1, 1) + datetime.timedelta(chance.below(3200))
        yield (f"C{number + 1:04d}", f"{first} {last}", chance.of(SEGMENTS), f"{since:%d/%m/%Y}",
               f"{first}.{last}{number}@example.org".lower())


def german(amount):
    """1234.5 as 1.234,50."""
    return f"{amount:,.2f}".replace(",", " ").replace(".", ",").replace(" ", ".")


def quoted(text):
    return '"' + text.replace('"', '""') + '"' if set(text) & set(';"\n') else text


def bank_lines():
    """What a bank's web site gives: a preamble, then postings with every fault that such files have."""
    chance = Chance(3)
    yield "Musterbank Musterstadt eG;Kontoauszug"
    yield "Konto;DE00 0000 0000 0000 0000 00"
    yield "Zeitraum;01.01.2025 - 31.12.2025"
    yield "Alle Angaben ohne Gewähr, Beträge in Euro"
    yield ""
    yield "Buchungstag;Wertstellung;Empfänger;Verwendungszweck;Betrag;Währung;Kategorie"
    start = datetime.date(2025, 1, 1)
    month = 1
    for number in range(POSTINGS):
        day = start + datetime.timedelta(number * 365 // POSTINGS)
        if day.month != month:
            month = day.month
            yield ";;;;;;"
            yield "   "
        amount = -5 - chance.random() ** 6 * 2500
        category = chance.of(["Wohnen", "Alltag", "Auto", "Reise", "Gesundheit"])
        payee = chance.of(PAYEES)
        if number % 80 == 0:
            amount, category, payee = 3150.0, "Gehalt", "Arbeitgeber GmbH"
        value_day = day + datetime.timedelta(chance.below(3))
        cells = [f"{day:%d.%m.%Y}", f"{value_day:%d.%m.%Y}", payee + chance.of(["", "", "  ", "\xa0", "        "]),
                 quoted(chance.of(PURPOSES).format(n=100000 + chance.below(900000))), german(amount), "EUR", category]
        if chance.below(40) == 0:
            cells.pop()  # no category, and no delimiter for it
        elif chance.below(60) == 0:
            cells.append("")  # a delimiter too many
        yield ";".join(cells)


def main():
    write("orders.csv", ["order_id", "customer_id", "order_date", "due_date", "country", "city", "product", "quantity",
                         "unit_price", "discount", "status", "note"], orders())
    write("customers.csv", ["customer_id", "name", "segment", "since", "email"], customers())
    with open(os.path.join(HERE, "data", "bank-export.csv"), "wb") as f:
        f.write("".join(line + "\r\n" for line in bank_lines()).encode("windows-1252"))


if __name__ == "__main__":
    main()
